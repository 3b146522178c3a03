// SPDX-License-Identifier: Apache-2.0
// A text is read character by character in its encoding, and each has a kind: what formats treat
// alike. Of bytes that are no character each longest beginning of one becomes one replacement, as
// Unicode recommends it, so that a damaged text loses nothing behind the damage. A carriage
// return and a newline are one line break.
#include "tools/formats/detail/characters.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace kaz::detail {

namespace {

/// 0x80 to 0x9F of Windows-1252; 0 where it has no character.
constexpr char16_t windows1252[] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

/// Control characters are bad in every format, but those that end a line or move to a tab: HTML
/// and XML allow no others, and none of the formats shows them.
constexpr std::array<Kind, 128> makeAscii() {
    std::array<Kind, 128> kinds{};
    for (std::size_t i = 0; i < kinds.size(); ++i)
        kinds[i] = i < 0x20 || i == 0x7F ? Kind::bad : Kind::plain;
    for (const char c : {'\n', '\v', '\f', '\r'})
        kinds[static_cast<std::size_t>(c)] = Kind::lineBreak;
    kinds['\t'] = Kind::tab;
    kinds['&'] = Kind::ampersand;
    kinds['<'] = Kind::less;
    kinds['>'] = Kind::greater;
    kinds['"'] = Kind::quote;
    kinds['\''] = Kind::apostrophe;
    kinds['`'] = Kind::backQuote;
    kinds['\\'] = Kind::backslash;
    kinds['{'] = Kind::openBrace;
    kinds['}'] = Kind::closeBrace;
    return kinds;
}

constexpr std::array<Kind, 128> ascii = makeAscii();

/// Code points that Unicode keeps for a program's own use and never for exchange.
bool isNoncharacter(char32_t code) {
    return (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
}

Kind kindOfSpace(char32_t code) {
    switch (code) {
    case 0x2002:
        return Kind::enSpace;
    case 0x2003:
        return Kind::emSpace;
    case 0x2007:
        return Kind::numberSpace;
    case 0x2009:
        return Kind::thinSpace;
    case 0x2011:
        return Kind::hardHyphen;
    case 0x2028:
    case 0x2029:
        return Kind::lineBreak;
    default:
        return Kind::other;
    }
}

/// 0x80 to 0x9F are controls as well; NEL ends a line.
Kind kindOfLatin(char32_t code) {
    if (code < 0xA0)
        return code == 0x85 ? Kind::lineBreak : Kind::bad;
    return code == 0xA0 ? Kind::hardSpace : code == 0xAD ? Kind::softHyphen : Kind::other;
}

Character character(char32_t code, int length) {
    const Kind kind = kindOf(code);
    return {kind == Kind::bad ? replacement : code, kind, length};
}

/// As browsers read it: texts that claim to be Latin-1 and use these bytes are Windows-1252. One
/// without a character there stays a control, and so becomes bad.
char32_t latin1(unsigned char byte) {
    if (byte < 0x80 || byte > 0x9F)
        return byte;
    const char32_t code = windows1252[byte - 0x80];
    return code != 0 ? code : byte;
}

} // namespace

Kind kindOf(char32_t code) {
    if (code < 0x80)
        return ascii[code];
    if (code < 0x100)
        return kindOfLatin(code);
    if (code >= 0x2002 && code <= 0x2029)
        return kindOfSpace(code);
    return isNoncharacter(code) ? Kind::bad : Kind::other;
}

Utf8 firstOfUtf8(const char* text, const char* end) {
    const auto lead = static_cast<unsigned char>(*text);
    if (lead < 0x80)
        return {lead, 1, true};
    // C0 and C1 could only begin forms that are too long, F5 and above none that exists.
    if (lead < 0xC2 || lead > 0xF4)
        return {lead, 1, false};
    const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    // The second byte says whether it is too long, a surrogate or beyond the last one.
    unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    // Five, four or three bits of the first byte are the character's.
    char32_t code = lead & (0x3FU >> more);
    for (int i = 1; i <= more; ++i) {
        // The end reads as a byte that continues nothing, so a text may end anywhere.
        const unsigned byte = text + i < end ? static_cast<unsigned char>(text[i]) : 0;
        if (byte < low || byte > high)
            return {code, i, false};
        code = code << 6 | (byte & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return {code, more + 1, true};
}

Character nextCharacter(const char* text, const char* end, text_encoding_enum encoding) {
    const auto byte = static_cast<unsigned char>(*text);
    if (byte == '\r' && end - text > 1 && text[1] == '\n')
        return {'\n', Kind::lineBreak, 2};
    if (byte < 0x80)
        return character(byte, 1);
    if (encoding == text_latin1)
        return character(latin1(byte), 1);
    const Utf8 first = firstOfUtf8(text, end);
    return first.valid ? character(first.code, first.length)
                       : Character{replacement, Kind::bad, first.length};
}

char* putUtf8(char* to, char32_t code) {
    if (code < 0x80) {
        *to++ = static_cast<char>(code);
        return to;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    const unsigned lead = more == 1 ? 0xC0 : more == 2 ? 0xE0 : 0xF0;
    *to++ = static_cast<char>(lead | code >> (6 * more));
    for (int i = more - 1; i >= 0; --i)
        *to++ = static_cast<char>(0x80 | (code >> (6 * i) & 0x3F));
    return to;
}

/// 0 for a character that the code page has not.
unsigned windows1252Byte(char32_t code) {
    if (code >= 0xA0 && code <= 0xFF)
        return code;
    const auto* const found = std::find(std::begin(windows1252), std::end(windows1252), code);
    return code != 0 && found != std::end(windows1252)
               ? 0x80 + static_cast<unsigned>(found - std::begin(windows1252))
               : 0;
}

} // namespace kaz::detail
