// SPDX-License-Identifier: Apache-2.0
// The result is valid JSON whatever the bytes are. Bytes that are no UTF-8 become lone halves of
// surrogates, one each, which nothing else can become: a reader that wants the bytes gets them
// back.
#include "tools/formats/detail/json_text.h"

#include "tools/platform/utf8.h"

namespace kaz::detail {

namespace {

constexpr std::string_view named = "\"\\\b\f\n\r\t";
constexpr std::string_view names = "\"\\bfnrt";

void appendEscape(std::string& out, std::string_view front, unsigned char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    out.append(front) += digits[byte >> 4];
    out += digits[byte & 15];
}

void appendAscii(std::string& out, char c) {
    constexpr unsigned char firstPrintable = 0x20;
    if (const std::size_t place = named.find(c); place != named.npos)
        (out += '\\') += names[place];
    else if (static_cast<unsigned char>(c) < firstPrintable)
        appendEscape(out, "\\u00", static_cast<unsigned char>(c));
    else
        out += c;
}

} // namespace

/// A lone low half (\udc80 to \udcff) is never part of valid UTF-8, so no text that is valid reads
/// as one that was not.
void appendJson(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        const host::Utf8Step step = host::utf8Step(text);
        const std::string_view part = text.substr(0, step.length);
        if (!step.isValid)
            for (const char c : part)
                appendEscape(out, "\\udc", static_cast<unsigned char>(c));
        else if (step.length == 1)
            appendAscii(out, part.front());
        else
            out += part;
        text.remove_prefix(step.length);
    }
    out += '"';
}

} // namespace kaz::detail
