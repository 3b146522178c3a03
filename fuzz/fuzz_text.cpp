// SPDX-License-Identifier: Apache-2.0
// Plain texts and character buffers against std::string.
#include "fuzz/harness.h"
#include "util/owned.h"

#include <algorithm>
#include <cctype>

namespace {

using fuzz::Input;

using Buffer = Owned<dd_buffer>;

std::string textOf(const dd_buffer* buffer) {
    FUZZ_CHECK(dd_text(buffer)[dd_length(buffer)] == '\0');
    return std::string(dd_text(buffer), static_cast<std::size_t>(dd_length(buffer)));
}

int sign(int value) {
    return (value > 0) - (value < 0);
}

void edit(Input& input, fuzz::Failures& failures, dd_buffer* buffer, std::string& model) {
    const int length = static_cast<int>(model.size());
    const auto half = static_cast<std::size_t>(length / 2);
    const std::string piece = input.cText(12);
    const int at = input.between(-2, length + 2);
    const int count = input.between(-1, 8);
    const auto retry = [&](auto act) {
        failures.step(act, [&] { FUZZ_CHECK(textOf(buffer) == model); });
    };
    const int operation = input.between(0, 8);
    if (operation == 0) {
        retry([&] { dd_add_char(buffer, '\0'); });
        model += '\0';
    } else if (operation == 1) { // a part of its own
        retry([&] { dd_add_bytes(buffer, dd_text(buffer) + half, length - length / 2); });
        model += model.substr(half);
    } else if (operation == 2) { // its own text as an argument, which ends at the first NUL
        retry([&] { dd_add_format(buffer, "%s|%d|%s", dd_text(buffer), at, piece.c_str()); });
        model += std::string(model.c_str()) + "|" + std::to_string(at) + "|" + piece;
    } else if (operation == 3) {
        const std::string inserted = count < 0 ? std::string(model.c_str()) : piece;
        retry([&] { dd_insert(buffer, at, count < 0 ? dd_text(buffer) : piece.c_str()); });
        model.insert(static_cast<std::size_t>(std::clamp(at, 0, length)), inserted);
    } else if (operation == 4) {
        failures.hold([&] { dd_remove(buffer, at, count); });
        if (at >= 0 && at < length && count > 0)
            model.erase(static_cast<std::size_t>(at), static_cast<std::size_t>(count));
    } else if (operation == 5) {
        retry([&] { dd_add_fill(buffer, '-', count); });
        model.append(static_cast<std::size_t>(std::max(count, 0)), '-');
    } else if (operation == 6) {
        dd_truncate(buffer, at);
        model.resize(static_cast<std::size_t>(std::clamp(at, 0, length)));
    } else {
        retry([&] { dd_add_text(buffer, piece.c_str()); });
        model += piece;
    }
}

void buffersFollowTheModel(Input& input) {
    fuzz::Failures failures(input);
    const int room = input.between(-1, 20);
    const Buffer buffer(failures.ask([room] { return dd_create(room); }));
    std::string model;
    for (std::size_t work = 0; !input.empty() && work < 3000000; work += model.size() + 20) {
        if (model.size() > 5000) {
            dd_clear(buffer.get());
            model.clear();
        }
        const Buffer before(failures.ask([&] { return dd_copy(buffer.get()); }));
        const std::string modelBefore = model;
        edit(input, failures, buffer.get(), model);
        FUZZ_CHECK(textOf(buffer.get()) == model);
        FUZZ_CHECK(dd_compare(buffer.get(), before.get()) == sign(model.compare(modelBefore)));
        FUZZ_CHECK(dd_char_at(buffer.get(), 0) == (model.empty() ? '\0' : model[0]));
    }
    FUZZ_CHECK(take(dd_take(buffer.get())) == model.c_str());
    FUZZ_CHECK(textOf(buffer.get()).empty());
    dd_add_text(buffer.get(), nullptr);
    FUZZ_CHECK(textOf(buffer.get()).empty());
    dd_reserve(nullptr, 5);
    dd_add_fill(nullptr, '-', 5);
    dd_truncate(nullptr, 0);
    dd_destroy(nullptr);
}

void textsFollowTheModel(Input& input) {
    fuzz::Failures failures(input);
    // The result of a function that makes a text.
    const auto made = [&](auto make) { return take(failures.ask(make)); };
    const std::string a = input.cText(600), b = input.cText(20), c = input.cText(20);
    // Texts that agree for a while are what comparison has to tell apart.
    const std::string like = a.substr(0, input.between<std::size_t>(0, a.size())) + b;
    FUZZ_CHECK(kaz_fast_stricmp(a.c_str(), like.c_str()) ==
               sign(fuzz::lowered(a).compare(fuzz::lowered(like))));
    FUZZ_CHECK(kaz_fast_stricmp(a.c_str(), fuzz::lowered(a).c_str()) == 0);
    FUZZ_CHECK(made([&] { return mkcpy(a.c_str()); }) == a);
    const int length = input.between(-1, 40);
    FUZZ_CHECK(made([&] { return mkncpy(a.c_str(), length); }) ==
               a.substr(0, static_cast<std::size_t>(std::max(length, 0))));
    FUZZ_CHECK(mkncpy(nullptr, length) == nullptr);
    FUZZ_CHECK(made([&] { return concat(a.c_str(), b.c_str()); }) == a + b);
    FUZZ_CHECK(made([&] { return concat3(a.c_str(), b.c_str(), c.c_str()); }) == a + b + c);
    FUZZ_CHECK(made([&] { return concat4(b.c_str(), a.c_str(), b.c_str(), c.c_str()); }) ==
               b + a + b + c);
    const char* const parts[] = {a.c_str(), nullptr, c.c_str()};
    FUZZ_CHECK(made([&] { return concat_texts(parts, 3, b.c_str()); }) == a + b + b + c);
    char* grown = concat_onto(nullptr, a.c_str());
    failures.step([&] { grown = concat_onto(grown, grown + a.size() / 2); }, // its own text
                  [&] { FUZZ_CHECK(grown == a); });
    FUZZ_CHECK(take(concat_onto(grown, b.c_str())) == a + a.substr(a.size() / 2) + b);
    const char replaced = a.empty() ? 'x' : a[a.size() / 2];
    std::string expected;
    for (const char each : a)
        expected += each == replaced ? b : std::string(1, each);
    FUZZ_CHECK(made([&] { return string_replace_char(a.c_str(), replaced, b.c_str()); }) ==
               expected);
    FUZZ_CHECK(is_pattern(a.c_str(), 1) == (a.find_first_of("*?[") != std::string::npos));
    FUZZ_CHECK(is_pattern(a.c_str(), 0) == (a.find_first_of("*?") != std::string::npos));
}

} // namespace

void fuzz::harness(Input& input) {
    if (input.flag())
        buffersFollowTheModel(input);
    else
        textsFollowTheModel(input);
}
