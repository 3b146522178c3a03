// SPDX-License-Identifier: Apache-2.0
// Nothing fails here: what cannot be part of a date becomes a `broken` token, so that
// an earlier mistake in the text is found first.
#include "tools/formats/detail/date_scanner.h"

namespace kaz::dates {

namespace {

enum class Class : std::uint8_t { other, separator, digit, letter, sign, comment };

/// All bytes beyond ASCII are letters: names of months in UTF-8 become one word without a look
/// at their characters.
/// All bytes beyond ASCII are letters: names of months in UTF-8 become one word without a look
/// at their characters.
constexpr Class classify(unsigned char byte) {
    const char c = static_cast<char>(byte);
    if (isDigit(c))
        return Class::digit;
    if ((lowerCase(c) >= 'a' && lowerCase(c) <= 'z') || byte >= 0x80)
        return Class::letter;
    if (std::string_view(" \t\r\n\v\f,").find(c) != std::string_view::npos)
        return Class::separator;
    if (std::string_view("+-:./@").find(c) != std::string_view::npos)
        return Class::sign;
    return c == '(' ? Class::comment : Class::other;
}

/// Looked up, which takes half the time of asking anew for each character.
constexpr std::array<Class, 256> classes = [] {
    std::array<Class, 256> result{};
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = classify(static_cast<unsigned char>(i));
    return result;
}();

constexpr Class classOf(char c) {
    return classes[static_cast<unsigned char>(c)];
}

constexpr Token::Kind kindOf(Class c) {
    return c == Class::digit    ? Token::number
           : c == Class::letter ? Token::word
           : c == Class::sign   ? Token::sign
                                : Token::broken;
}

} // namespace

/// A token is a byte long at least, so the array has room for those of the longest text and for
/// the end behind them; lengths fit a byte for the same reason.
/// A token is a byte long at least, so the array has room for those of the longest text and for
/// the end behind them; lengths fit a byte for the same reason.
Tokens::Tokens(std::string_view text) : text_(text) {
    bool isApart = true;
    for (std::size_t at = 0; at < text.size();) {
        const Class kind = classOf(text[at]);
        std::size_t past = at + 1;
        if (kind == Class::comment)
            past = text.find(')', at) + 1; // 0 for one that is not closed
        // A comment separates as a blank does. One that is not closed is a broken token.
        // A comment separates as a blank does. One that is not closed is a broken token.
        if (kind == Class::separator || (kind == Class::comment && past != 0)) {
            hasComment_ = hasComment_ || kind == Class::comment;
            isApart = true;
        } else {
            past = at + 1;
            if (kind == Class::digit || kind == Class::letter)
                while (past < text.size() && classOf(text[past]) == kind)
                    ++past;
            tokens_[count_++] = {kindOf(kind), isApart, static_cast<std::uint8_t>(past - at),
                                 static_cast<int>(at), &text[at]};
            isApart = false;
        }
        at = past;
    }
    tokens_[count_++] = {Token::end, true, 0, static_cast<int>(text.size()), text.data()};
}

/// A comma is a separator elsewhere and has no token, so the text itself is looked at.
/// A comma is a separator elsewhere and has no token, so the text itself is looked at.
std::string_view Tokens::fractionBehind(std::size_t index) const {
    const auto at = static_cast<std::size_t>((*this)[index].past());
    if (at + 1 >= text_.size() || (text_[at] != '.' && text_[at] != ','))
        return {};
    std::size_t past = at + 1;
    while (past < text_.size() && isDigit(text_[past]))
        ++past;
    return text_.substr(at + 1, past - at - 1);
}

} // namespace kaz::dates
