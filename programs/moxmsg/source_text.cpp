// SPDX-License-Identifier: Apache-2.0
// One message a line, with continuations; comments and blank lines between. A problem ends its
// message and nothing else, and the line number is of the line on which the message began where
// that is what has to be mended. What sourceLine() writes, parseSource() reads as the same text.
#include "source_text.h"

#include "tools/messages/catalog/detail/catalog_layout.h"

#include <algorithm>
#include <string_view>

namespace {

using namespace kaz::detail::catalog;

/// Control characters with an escape of their own.
struct Escape {
    char letter;
    char character;
};
constexpr Escape escapes[] = {{'a', '\a'}, {'b', '\b'}, {'t', '\t'},  {'n', '\n'}, {'v', '\v'},
                              {'f', '\f'}, {'r', '\r'}, {'\\', '\\'}, {' ', ' '},  {'#', '#'}};

constexpr std::string_view blanks = " \t";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t longestText = recordSize - 1;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

int hexDigit(char c) {
    if (isDigit(c))
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
}

class Parser {
public:
    Parser(std::string_view source, Messages& result) : rest_(source), messages_(result) {
        if (rest_.starts_with(byteOrderMark))
            rest_.remove_prefix(byteOrderMark.size());
    }

    void parse() {
        while (nextLine()) {
            skipBlanks(line_);
            if (!line_.empty() && line_.front() != '#')
                parseMessage();
        }
    }

private:
    bool nextLine() {
        if (rest_.empty())
            return false;
        const std::size_t end = rest_.find('\n');
        // A last line without a newline is a line, too.
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        if (line_.ends_with('\r'))
            line_.remove_suffix(1);
        ++lineNumber_;
        return true;
    }

    void problem(const std::string& text) {
        messages_.addProblem(lineNumber_, text);
        sound_ = false;
    }

    void parseMessage() {
        sound_ = true;
        const int begin = lineNumber_;
        const int number = parseNumber();
        skipBlanks(line_);
        const std::string text = parseText();
        if (sound_)
            add(number, text, begin);
    }

    int parseNumber() {
        std::size_t digits = 0;
        while (digits < line_.size() && isDigit(line_[digits]))
            ++digits;
        const std::string written(line_.substr(0, digits));
        line_.remove_prefix(digits);
        if (digits == 0 ||
            (!line_.empty() && blanks.find(line_.front()) == std::string_view::npos)) {
            problem("a line begins with a message number and a blank, or with #");
            return 0;
        }
        // Seven digits fit an int and are out of range already.
        const std::size_t zeros = std::min(written.find_first_not_of('0'), digits - 1);
        const int number = digits - zeros > 7 ? lastNumber + 1 : std::stoi(written.substr(zeros));
        if (number > lastNumber)
            problem("number " + written + " is outside 0 to " + std::to_string(lastNumber));
        return number;
    }

    /// The text up to the end of the line, and of those that continue it.
    std::string parseText() {
        std::string text;
        while (parsePart(text)) {
            if (!nextLine()) {
                problem("the last line asks for a continuation");
                break;
            }
            skipBlanks(line_);
        }
        return text;
    }

    /// Blanks at the end are dropped unless they are escaped or a continuation
    /// follows. True when it does.
    bool parsePart(std::string& text) {
        // What was there before the part stays: its blanks were escaped or stand before a
        // continuation.
        std::size_t kept = text.size();
        while (!line_.empty()) {
            const char c = line_.front();
            line_.remove_prefix(1);
            // The text keeps the blanks in front of it.
            if (c == '\\' && line_.empty())
                return true;
            if (c == '\0')
                problem("a text cannot hold a NUL");
            text += c == '\\' ? parseEscape() : c;
            if (blanks.find(c) == std::string_view::npos)
                kept = text.size();
        }
        text.resize(kept);
        return false;
    }

    char parseEscape() {
        const char letter = line_.front();
        line_.remove_prefix(1);
        for (const Escape& escape : escapes) {
            if (escape.letter == letter)
                return escape.character;
        }
        if (letter != 'x') {
            problem(std::string("\\") + letter + " is no escape");
            return letter;
        }
        const int high = line_.size() > 1 ? hexDigit(line_[0]) : -1;
        const int low = line_.size() > 1 ? hexDigit(line_[1]) : -1;
        if (high < 0 || low < 0) {
            problem("\\x needs two hexadecimal digits");
            return letter;
        }
        // Both are digits here, so the sum is 0 for "00" alone.
        if (high + low == 0)
            problem("a text cannot hold a NUL");
        line_.remove_prefix(2);
        return static_cast<char>(16 * high + low);
    }

    void add(int number, const std::string& text, int begin) {
        if (text.size() > longestText)
            messages_.addProblem(begin, "the text of " + std::to_string(number) + " has " +
                                            std::to_string(text.size()) + " bytes, " +
                                            std::to_string(longestText) + " fit");
        // The first one stays; each later one is a problem.
        const auto [place, added] = messages_.texts.try_emplace(number, Message{text, begin});
        if (!added)
            messages_.addProblem(begin, "message " + std::to_string(number) + " is in line " +
                                            std::to_string(place->second.line) + " already");
    }

    std::string_view rest_;
    std::string_view line_;
    int lineNumber_ = 0;
    bool sound_ = true; ///< no problem yet with the present message
    Messages& messages_;
};

std::string escaped(char c) {
    for (const Escape& escape : escapes) {
        if (escape.character == c)
            return {'\\', escape.letter};
    }
    constexpr char digits[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    return {'\\', 'x', digits[byte / 16], digits[byte % 16]};
}

} // namespace

void parseSource(const std::string& source, Messages& messages) {
    Parser(source, messages).parse();
}

std::string sourceLine(int number, const std::string& text) {
    std::string line = std::to_string(number);
    if (!text.empty())
        line += ' ';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        const bool isControl = byte < ' ' || byte == 0x7F;
        const bool isOuterBlank = c == ' ' && (i == 0 || i + 1 == text.size());
        line += isControl || isOuterBlank || c == '\\' ? escaped(c) : std::string(1, c);
    }
    return line;
}
