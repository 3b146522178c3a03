// SPDX-License-Identifier: Apache-2.0
/// @file
/// The words, numbers and signs of a date that somebody wrote.
#pragma once

#include "tools/formats/detail/ascii.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace kaz::dates {

inline constexpr std::size_t longestText = 255;

struct Token {
    enum Kind : std::uint8_t {
        end,
        number, ///< digits
        word,   ///< ASCII letters and bytes beyond ASCII
        sign,   ///< one of + - : . / @
        broken, ///< anything else, an open parenthesis included
    };

    // Nothing has a first value: an array of these costs nothing until it is filled.
    Kind kind;
    bool isApart; ///< separators or a comment stand before it, or nothing at all
    std::uint8_t size;
    int at; ///< in bytes
    const char* start;

    std::string_view text() const { return {start, size}; }
    bool is(std::string_view wanted) const { return kind == word && isSameText(text(), wanted); }
    bool isSign(char wanted) const { return kind == sign && *start == wanted; }
    bool isNumber(std::size_t digits) const { return kind == number && size == digits; }
    /// A number of one or two digits.
    bool isShortNumber() const { return kind == number && size <= 2; }
    int value() const { return static_cast<int>(numberOf(text())); } ///< of up to 9 digits
    int past() const { return at + size; }
};

/// A text of at most `longestText` bytes in pieces; it must outlive this.
class Tokens {
public:
    explicit Tokens(std::string_view text);

    /// From the last one on they are all `Token::end`.
    const Token& operator[](std::size_t index) const {
        return tokens_[index < count_ ? index : count_ - 1];
    }
    /// Nothing but separators: no comment either.
    bool isEmpty() const { return count_ == 1 && !hasComment_; }
    /// Do "." or "," and digits stand right behind the token? Then these digits.
    std::string_view fractionBehind(std::size_t index) const;

private:
    std::string_view text_;
    std::array<Token, longestText + 1> tokens_; // as far as count_ says
    std::size_t count_ = 0;
    bool hasComment_ = false;
};

} // namespace kaz::dates
