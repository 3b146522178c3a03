// SPDX-License-Identifier: Apache-2.0
// Numbers in strings: formats beside the runtime's own formatting into a buffer
// that is large enough, and whole numbers beside digits computed here.

#include "fuzz/harness.h"
#include "tools/strings/KazString.h"
#include "tools/strings/KazWString.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

/// A conversion with flags, a width and a precision that the bytes choose.
std::string conversion(fuzz::Input& input, const char* kind) {
    std::string result = "%" + input.textOf("-+ #0", 3);
    if (input.flag())
        result += std::to_string(input.between(1, 700));
    if (input.flag())
        result += "." + std::to_string(input.between(0, 40));
    return result + kind;
}

template <class... Arguments>
void checkFormat(KazString& s, std::string& model, const std::string& format,
                 Arguments... arguments) {
    std::vector<char> buffer(40000);
    const int n = std::snprintf(buffer.data(), buffer.size(), format.c_str(), arguments...);
    FUZZ_CHECK(n >= 0 && n < 40000);
    const std::string text = buffer.data(); // up to the first NUL, as %c may write one

    s.appendFormat(format.c_str(), arguments...);
    model += text;
    FUZZ_CHECK(model == s.getValue());
    KazString fresh("old");
    const KazString sharer = fresh;
    fresh.format(format.c_str(), arguments...);
    FUZZ_CHECK(text == fresh.getValue() && static_cast<int>(text.size()) == fresh.getLength());
    FUZZ_CHECK(sharer == "old");
}

void formatOne(fuzz::Input& input, KazString& s, std::string& model) {
    const std::string around = input.textOf("ab <", 600);
    switch (input.between(0, 6)) {
    case 0:
        return checkFormat(s, model, around + conversion(input, "d"), input.raw<int>());
    case 1:
        return checkFormat(s, model, conversion(input, "x") + around, input.raw<unsigned>());
    case 2:
        return checkFormat(s, model, conversion(input, "lld"), input.raw<long long>());
    case 3:
        return checkFormat(s, model, conversion(input, "g") + "%%", input.raw<double>());
    case 4:
        return checkFormat(s, model, conversion(input, "f"), input.raw<float>());
    case 5:
        return checkFormat(s, model, around + conversion(input, "s") + conversion(input, "i"),
                           input.cText(40).c_str(), input.raw<int>());
    default:
        return checkFormat(s, model, "%c" + around + "%s", input.raw<signed char>(),
                           KazString(around.c_str()).getValue());
    }
}

void appendOne(fuzz::Input& input, KazString& s, std::string& model) {
    const int n = input.raw<int>() >> input.between(0, 31);
    s.appendNumber(n);
    model += std::to_string(n);
    FUZZ_CHECK(model == s.getValue());
    KazWString wide;
    wide.appendNumber(n);
    FUZZ_CHECK(wide.toNarrow() == std::to_string(n).c_str());
}

void all(fuzz::Input input) {
    KazString s;
    std::string model;
    for (int i = 0; i < 1000 && !input.empty(); ++i) {
        if (input.flag())
            formatOne(input, s, model);
        else
            appendOne(input, s, model);
        if (model.size() > 2000) {
            s.clear();
            model.clear();
        }
    }
}

} // namespace

void fuzz::harness(Input& input) {
    Failures::whole(input, all);
}
