// SPDX-License-Identifier: Apache-2.0
#include "tools/formats/detail/report_text.h"

#include "tools/formats/detail/characters.h"

#include <algorithm>

namespace kaz::detail {

namespace {

bool isControl(const Utf8& c) {
    return c.valid && (c.code < 0x20 || (c.code >= 0x7F && c.code <= 0x9F));
}

} // namespace

// A replacement would be shown for a control character, hence a blank in its place. The first two
// tests see what the third cannot: the kind of a control is the same as that of a damaged byte.
std::string cleaned(std::string_view text, text_encoding_enum encoding) {
    std::string result;
    for (const char* at = text.data(); at != text.data() + text.size();) {
        const char* const end = text.data() + text.size();
        const auto c = nextCharacter(at, end, encoding);
        const bool isBlank = static_cast<unsigned char>(*at) < 0x20 || *at == 0x7F ||
                             (encoding == text_utf8 && isControl(firstOfUtf8(at, end))) ||
                             c.kind == Kind::lineBreak;
        char utf8[4];
        if (isBlank)
            result += ' ';
        else
            result.append(utf8, putUtf8(utf8, c.code));
        at += c.length;
    }
    return result;
}

std::string inUtf8(std::string_view text, text_encoding_enum encoding) {
    std::string result(text);
    if (encoding != text_latin1)
        return result;
    result.clear();
    for (const char& c : text) {
        char utf8[4];
        const auto character = nextCharacter(&c, &c + 1, encoding);
        // A control character stays one, so that the link is refused for it.
        const bool isAscii = static_cast<unsigned char>(c) < 0x80;
        result.append(utf8, isAscii ? std::copy_n(&c, 1, utf8) : putUtf8(utf8, character.code));
    }
    return result;
}

std::vector<std::string> codeLines(std::string_view text, text_encoding_enum encoding) {
    std::vector<std::string> lines(1);
    std::size_t column = 0;
    for (const char* at = text.data(); at != text.data() + text.size();) {
        const auto c = nextCharacter(at, text.data() + text.size(), encoding);
        at += c.length;
        if (c.kind == Kind::lineBreak) {
            lines.emplace_back();
            column = 0;
            continue;
        }
        const std::size_t width = c.kind == Kind::tab ? 8 - column % 8 : 1;
        column += width;
        char utf8[4];
        if (c.kind == Kind::tab)
            lines.back().append(width, ' ');
        else
            lines.back().append(utf8, putUtf8(utf8, c.code));
    }
    if (lines.size() > 1 && lines.back().empty())
        lines.pop_back(); // a line end ends a line
    return lines;
}

bool isLanguage(std::string_view tag) {
    return !tag.empty() && tag.size() <= 35 && std::all_of(tag.begin(), tag.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
               c == '-';
    });
}

} // namespace kaz::detail
