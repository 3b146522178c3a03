// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a character is, before any format makes something of it.
#pragma once

#include "tools/formats/encode.h"

#include <cstddef>
#include <cstdint>

namespace kaz::detail {

/// The classes that at least one format writes in a way of its own.
enum class Kind : std::uint8_t {
    plain, ///< the rest of ASCII
    other, ///< the rest of Unicode
    lineBreak,
    tab,
    bad, ///< no character at all: counts as U+FFFD
    ampersand,
    less,
    greater,
    quote,
    apostrophe,
    backQuote,
    backslash,
    openBrace,
    closeBrace,
    hardSpace,
    softHyphen,
    hardHyphen,
    enSpace,
    emSpace,
    numberSpace,
    thinSpace,
};
constexpr std::size_t kindCount = static_cast<std::size_t>(Kind::thinSpace) + 1;

constexpr char32_t replacement = 0xFFFD;

/// A character of a text and how many bytes it takes there.
struct Character {
    char32_t code; ///< U+FFFD for a bad one
    Kind kind;
    int length;
};

Kind kindOf(char32_t code);

/// The first character of a text that is not empty. CR LF is one character.
Character nextCharacter(const char* text, const char* end, text_encoding_enum encoding);

/// What a text in UTF-8 begins with.
struct Utf8 {
    char32_t code;
    int length; ///< of an invalid beginning: of its maximal part
    bool valid;
};
/// Well-formed sequences are those of the Unicode Standard, table 3-7.
Utf8 firstOfUtf8(const char* text, const char* end);

/// Writes a code point that is none of the surrogates; gives where it ends, at most 4 bytes on.
char* putUtf8(char* to, char32_t code);

/// The byte that Windows-1252 has for a character beyond ASCII; 0 for none.
unsigned windows1252Byte(char32_t code);

} // namespace kaz::detail
