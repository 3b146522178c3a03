// Nothing fails here: what cannot be part of a date becomes a `broken` token, so that
// an earlier mistake in the text is found first.
#include "tools/formats/detail/date_scanner.h"

namespace kaz::dates {

namespace {

constexpr std::string_view separators = " \t\r\n\v\f,";
constexpr std::string_view signs = "+-:./@";

bool isLetter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (lowerCase(c) >= 'a' && lowerCase(c) <= 'z') || byte >= 0x80;
}

template <class Belongs>
std::size_t runOf(std::string_view text, std::size_t at, Belongs belongs) {
    std::size_t past = at;
    while (past < text.size() && belongs(text[past]))
        ++past;
    return past - at;
}

} // namespace

Tokens::Tokens(std::string_view text) : text_(text) {
    bool isApart = true;
    for (std::size_t at = 0;; isApart = false) {
        isApart = skipBetween(at) || isApart;
        if (at == text.size())
            break;
        if (isDigit(text[at]))
            add(Token::number, isApart, at, runOf(text, at, isDigit));
        else if (isLetter(text[at]))
            add(Token::word, isApart, at, runOf(text, at, isLetter));
        else
            add(signs.find(text[at]) != signs.npos ? Token::sign : Token::broken, isApart, at, 1);
        at += tokens_[count_ - 1].text.size();
    }
    add(Token::end, true, text.size(), 0);
}

void Tokens::add(Token::Kind kind, bool isApart, std::size_t at, std::size_t length) {
    tokens_[count_++] = {kind, isApart, static_cast<int>(at), text_.substr(at, length)};
}

/// Separators and closed comments; an open one is left to be a `broken` token.
bool Tokens::skipBetween(std::size_t& at) {
    const std::size_t start = at;
    while (at < text_.size()) {
        const bool isComment = text_[at] == '(';
        const std::size_t close = isComment ? text_.find(')', at) : at;
        if (close == text_.npos || (!isComment && separators.find(text_[at]) == separators.npos))
            break;
        hasComment_ = hasComment_ || isComment;
        at = close + 1;
    }
    return at != start;
}

std::string_view Tokens::fractionBehind(std::size_t index) const {
    const auto at = static_cast<std::size_t>((*this)[index].past());
    if (at + 1 >= text_.size() || (text_[at] != '.' && text_[at] != ','))
        return {};
    return text_.substr(at + 1, runOf(text_, at + 1, isDigit));
}

} // namespace kaz::dates
