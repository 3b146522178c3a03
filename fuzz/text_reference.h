// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the characters of a text are, found the slow way, and readers of the texts that
/// the encoders make. They take nothing but what the encoders are allowed to write.
#pragma once

#include "fuzz/check.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace reference {

inline constexpr char32_t bad = 0xFFFD;

inline std::string toUtf8(char32_t c) {
    const auto byte = [](char32_t value) { return static_cast<char>(value); };
    if (c < 0x80)
        return {byte(c)};
    if (c < 0x800)
        return {byte(0xC0 + c / 64), byte(0x80 + c % 64)};
    if (c < 0x10000)
        return {byte(0xE0 + c / 4096), byte(0x80 + c / 64 % 64), byte(0x80 + c % 64)};
    return {byte(0xF0 + c / 262144), byte(0x80 + c / 4096 % 64), byte(0x80 + c / 64 % 64),
            byte(0x80 + c % 64)};
}

/// The character whose only spelling @p bytes is.
inline std::optional<char32_t> asCharacter(std::string_view bytes) {
    static constexpr std::uint8_t leads[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    if (bytes.empty() || bytes.size() > 4)
        return {};
    char32_t code = static_cast<unsigned char>(bytes[0]) & leads[bytes.size()];
    for (const char c : bytes.substr(1))
        code = code * 64 + (static_cast<unsigned char>(c) & 0x3F);
    if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF) || toUtf8(code) != bytes)
        return {};
    return code;
}

/// Whether something can follow that makes a character of @p bytes.
inline bool canBegin(const std::string& bytes) {
    if (asCharacter(bytes))
        return true;
    if (bytes.size() > 3)
        return false;
    return std::any_of(&"\x80\x90\xA0\xBF"[0], &"\x80\x90\xA0\xBF"[0] + 4,
                       [&](char next) { return canBegin(bytes + next); });
}

/// One character, or one maximal part of none, and its bytes.
struct Piece {
    std::optional<char32_t> code;
    std::string_view bytes;
};

inline Piece firstPiece(std::string_view text) {
    if (static_cast<unsigned char>(text[0]) < 0x80)
        return {static_cast<unsigned char>(text[0]), text.substr(0, 1)};
    for (std::size_t n = std::min<std::size_t>(4, text.size()); n > 0; --n)
        if (const auto code = asCharacter(text.substr(0, n)))
            return {code, text.substr(0, n)};
    std::size_t n = 1;
    while (n < text.size() && canBegin(std::string(text.substr(0, n + 1))))
        ++n;
    return {{}, text.substr(0, n)};
}

/// As documents see it: "\n" for line breaks, U+FFFD for what is no character.
inline char32_t inDocument(char32_t c) {
    if ((c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029)
        return '\n';
    const bool isControl = (c < 0x20 && c != '\t') || (c >= 0x7F && c <= 0x9F);
    const bool isNone = (c >= 0xFDD0 && c <= 0xFDEF) || c % 0x10000 >= 0xFFFE;
    return isControl || isNone ? bad : c;
}

inline std::u32string charactersOf(std::string_view text) {
    std::u32string result;
    while (!text.empty()) {
        const Piece piece = firstPiece(text);
        result += piece.code ? inDocument(*piece.code) : bad;
        const bool isPair = text.starts_with("\r\n");
        text.remove_prefix(isPair ? 2 : piece.bytes.size());
    }
    return result;
}

inline std::u32string charactersOfLatin1(std::string_view text) {
    static constexpr char32_t upper[] = {
        0x20AC, bad,    0x201A, 0x192,  0x201E, 0x2026, 0x2020, 0x2021, 0x2C6,  0x2030, 0x160,
        0x2039, 0x152,  bad,    0x17D,  bad,    bad,    0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x2DC,  0x2122, 0x161,  0x203A, 0x153,  bad,    0x17E,  0x178};
    std::u32string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        result += byte >= 0x80 && byte < 0xA0 ? upper[byte - 0x80] : inDocument(byte);
        if (text.substr(i).starts_with("\r\n"))
            ++i;
    }
    return result;
}

/// Takes the spelling of one character from the front.
class Reader {
public:
    explicit Reader(std::string_view text) : rest(text) {}

    bool empty() const { return rest.empty(); }
    bool is(std::string_view expected) const { return rest.starts_with(expected); }
    bool isOneOf(std::string_view characters) const {
        return !rest.empty() && characters.find(rest[0]) != std::string_view::npos;
    }
    bool take(std::string_view expected) {
        return is(expected) && !takeFirst(expected.size()).empty();
    }
    void expect(std::string_view expected) { FUZZ_CHECK(take(expected)); }
    /// All in front of the first of these characters, or everything.
    std::string_view takeUntil(std::string_view ends) {
        return takeFirst(rest.find_first_of(ends));
    }
    std::string_view takeWhile(std::string_view characters) {
        return takeFirst(rest.find_first_not_of(characters));
    }
    char32_t takeHex(std::size_t digits) {
        char32_t value = 0;
        for (; digits > 0; --digits) {
            const std::size_t digit = std::string_view("0123456789abcdef").find(next());
            FUZZ_CHECK(digit < 16);
            value = value * 16 + static_cast<char32_t>(digit);
        }
        return value;
    }
    int takeNumber() {
        const bool isNegative = take("-");
        int value = 0, digits = 0;
        for (; !rest.empty() && rest[0] >= '0' && rest[0] <= '9' && digits < 9; ++digits)
            value = value * 10 + (next() - '0');
        FUZZ_CHECK(digits > 0);
        return isNegative ? -value : value;
    }
    /// A character in UTF-8 below @p end that is no control character and none of these.
    char32_t takeCharacter(std::string_view others, char32_t end = 0x110000) {
        const Piece piece = firstPiece(rest);
        FUZZ_CHECK(piece.code && inDocument(*piece.code) == *piece.code);
        FUZZ_CHECK(*piece.code >= ' ' && *piece.code < end);
        FUZZ_CHECK(others.find(piece.bytes) == std::string_view::npos);
        takeFirst(piece.bytes.size());
        return *piece.code;
    }
    char next() {
        FUZZ_CHECK(!rest.empty());
        return takeFirst(1)[0];
    }
    template <class Table>
    std::optional<char32_t> takeOneOf(const Table& table) {
        for (const auto& [spelling, code] : table)
            if (take(spelling))
                return code;
        return {};
    }

private:
    std::string_view takeFirst(std::size_t count) {
        const std::string_view taken = rest.substr(0, count);
        rest.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest;
};

using Table = std::map<std::string_view, char32_t>;

/// The whole of @p text: spellings of @p table, and what @p other reads.
template <class Other>
std::u32string decoded(std::string_view text, const Table& table, Other other) {
    std::u32string result;
    for (Reader reader(text); !reader.empty();) {
        const auto code = reader.takeOneOf(table);
        result += code ? *code : other(reader);
    }
    return result;
}

inline std::u32string fromHtml(std::string_view text, Table more) {
    more.insert({{"&amp;", '&'},
                 {"&lt;", '<'},
                 {"&gt;", '>'},
                 {"&quot;", '"'},
                 {"&#39;", '\''},
                 {"&nbsp;", 0xA0},
                 {"&shy;", 0xAD}});
    return decoded(text, more, [](Reader& reader) { return reader.takeCharacter("&<>\"'"); });
}

inline char32_t takeRtfUnit(Reader& reader) {
    const int number = reader.takeNumber();
    FUZZ_CHECK(number >= -32768 && number <= 32767);
    if (reader.take("\\'"))
        reader.takeHex(2);
    else
        FUZZ_CHECK(reader.take("?"));
    return static_cast<char32_t>(number < 0 ? number + 65536 : number);
}

inline std::u32string fromRtf(std::string_view text) {
    static const Table table = {{"\\line ", '\n'}, {"\\tab ", '\t'}, {"\\\\", '\\'},
                                {"\\{", '{'},      {"\\}", '}'},     {"\\~", 0xA0},
                                {"\\-", 0xAD},     {"\\_", 0x2011}};
    return decoded(text, table, [](Reader& reader) -> char32_t {
        if (!reader.take("\\u"))
            return reader.takeCharacter("\\{}", 0x7F);
        const char32_t code = takeRtfUnit(reader);
        if (code < 0xD800 || code >= 0xDC00)
            return code;
        reader.expect("\\u");
        const char32_t low = takeRtfUnit(reader);
        FUZZ_CHECK(low >= 0xDC00 && low < 0xE000);
        return 0x10000 + (code - 0xD800) * 1024 + (low - 0xDC00);
    });
}

/// The inside of a string, up to and without its end.
inline std::u32string takeMifString(Reader& reader) {
    static const Table table = {
        {"\\t", '\t'}, {"\\>", '>'}, {"\\q", '\''}, {"\\Q", '`'}, {"\\\\", '\\'}};
    std::u32string result;
    while (!reader.take("'")) {
        const auto code = reader.takeOneOf(table);
        result += code ? *code : reader.takeCharacter(">\\`");
    }
    return result;
}

inline std::u32string fromMif(std::string_view text) {
    static const Table table = {{"HardReturn>", '\n'},    {"HardSpace>", 0xA0},
                                {"DiscHyphen>", 0xAD},    {"HardHyphen>", 0x2011},
                                {"EnSpace>", 0x2002},     {"EmSpace>", 0x2003},
                                {"NumberSpace>", 0x2007}, {"ThinSpace>", 0x2009}};
    std::u32string result;
    bool wasString = false;
    for (Reader reader(text); !reader.empty();) {
        if (reader.take("<Char ")) {
            const auto code = reader.takeOneOf(table);
            FUZZ_CHECK(code.has_value());
            result += *code;
            wasString = false;
            continue;
        }
        FUZZ_CHECK(!wasString && reader.take("<String `"));
        const std::u32string part = takeMifString(reader);
        FUZZ_CHECK(!part.empty() && reader.take(">"));
        result += part;
        wasString = true;
    }
    return result;
}

inline std::u32string fromInterleaf(std::string_view text) {
    static const Table table = {
        {"<<", '<'}, {"<HR>", '\n'}, {"<Tab>", '\t'}, {"<SP>", 0xA0}, {"<->", 0xAD}};
    return decoded(text, table, [](Reader& reader) {
        if (!reader.take("<#"))
            return reader.takeCharacter("<", 0x7F);
        const char32_t code = reader.takeHex(2);
        FUZZ_CHECK(code > 0xA0 && code != 0xAD && reader.take(">"));
        return code;
    });
}

/// What Interleaf can show of a text.
inline std::u32string inInterleaf(const std::u32string& text) {
    static const std::map<char32_t, std::u32string> likeness = {
        {0x2010, U"-"},    {0x2011, U"-"},   {0x2012, U"-"},  {0x2013, U"-"},  {0x2212, U"-"},
        {0x2014, U"--"},   {0x2015, U"--"},  {0x2018, U"'"},  {0x2019, U"'"},  {0x201A, U"'"},
        {0x2032, U"'"},    {0x201C, U"\""},  {0x201D, U"\""}, {0x201E, U"\""}, {0x2033, U"\""},
        {0x2022, U"*"},    {0x2026, U"..."}, {0x2039, U"<"},  {0x203A, U">"},  {0x20AC, U"EUR"},
        {0x2122, U"(TM)"}, {0x202F, U" "},   {0x2002, U" "},  {0x2003, U" "},  {0x2007, U" "},
        {0x2009, U" "}};
    std::u32string result;
    for (const char32_t c : text) {
        const auto found = likeness.find(c);
        result += c < 0x100                 ? std::u32string(1, c)
                  : found != likeness.end() ? found->second
                                            : std::u32string(U"?");
    }
    return result;
}

} // namespace reference
