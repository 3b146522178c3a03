// SPDX-License-Identifier: Apache-2.0
// The rules are a shell's: apostrophes keep everything, inside quotes a backslash protects four
// characters only, and outside of both it protects any. What quote_word() writes, both a shell
// and next_word() read as the same word. Texts are walked over twice, first to measure and then
// to write, so that the two cannot differ and each word takes one allocation.
#include "tools/util/text.h"

#include "tools/util/detail/allocate.h"

#include <cstring>

namespace {

/// Safe anywhere on a shell's command line, beside letters, digits and bytes
/// above 127. The backslash of native paths is not.
constexpr char plainCharacters[] = "@%_-+=:,./";

/// What a backslash protects inside double quotes, and so what needs one there.
constexpr char protectedInQuotes[] = "\"\\$`";

/// strchr() finds the terminator, too.
bool isOneOf(char c, const char* set) {
    return c != '\0' && std::strchr(set, c) != nullptr;
}

bool isSeparator(char c) {
    return isOneOf(c, " \t\n");
}

/// Bytes above 127, as in UTF-8, mean nothing to a shell.
bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           static_cast<unsigned char>(c) > 127 || isOneOf(c, plainCharacters);
}

/// Walks over quoted text and hands out what it stands for. Without a target
/// it only walks, so that one walk finds the end and measures.
class Unquoter {
public:
    Unquoter(const char* from, char* target) : at_(from), target_(target) {}

    void readWord() {
        while (*at_ != '\0' && !isSeparator(*at_))
            readPiece();
    }

    void readAll() {
        while (*at_ != '\0')
            readPiece();
    }

    const char* position() const { return at_; }
    std::size_t length() const { return length_; }
    bool unclosed() const { return unclosed_; }

private:
    void put(char c) {
        if (target_ != nullptr)
            target_[length_] = c;
        ++length_;
    }

    void readPiece() {
        switch (*at_) {
        case '\'':
            readApostrophes();
            break;
        case '"':
            readQuotes();
            break;
        case '\\':
            readEscape(nullptr);
            break;
        default:
            put(*at_++);
        }
    }

    void readApostrophes() {
        for (++at_; *at_ != '\'' && *at_ != '\0'; ++at_)
            put(*at_);
        close();
    }

    void readQuotes() {
        ++at_;
        while (*at_ != '"' && *at_ != '\0') {
            if (*at_ == '\\')
                readEscape(protectedInQuotes);
            else
                put(*at_++);
        }
        close();
    }

    void close() {
        if (*at_ == '\0')
            unclosed_ = true;
        else
            ++at_;
    }

    /// @p effective: the characters that lose their backslash; null: all do.
    void readEscape(const char* effective) {
        const char next = at_[1];
        // A line that goes on: both characters vanish, also inside quotes.
        if (next == '\n') {
            at_ += 2;
            return;
        }
        // A backslash at the very end stands for itself.
        const bool loses = next != '\0' && (effective == nullptr || isOneOf(next, effective));
        if (loses)
            ++at_;
        put(*at_++);
    }

    const char* at_;
    char* target_;
    std::size_t length_ = 0;
    bool unclosed_ = false;
};

/// What @p reader stood for when it read by @p read from @p from on.
char* unquoted(const char* from, const Unquoter& measured, void (Unquoter::*read)()) {
    char* word = static_cast<char*>(kaz::detail::allocate(measured.length() + 1));
    Unquoter writer(from, word);
    (writer.*read)();
    word[writer.length()] = '\0';
    return word;
}

} // namespace

bool word_needs_quotes(const char* word) {
    if (word == nullptr || *word == '\0')
        return true;
    for (; *word != '\0'; ++word)
        if (!isPlain(*word))
            return true;
    return false;
}

char* quote_word(const char* word) {
    if (word == nullptr)
        word = "";
    if (!word_needs_quotes(word))
        return mkcpy(word);
    // Double quotes and not apostrophes: an apostrophe cannot stand between apostrophes.
    std::size_t length = 2;
    for (const char* p = word; *p != '\0'; ++p)
        length += isOneOf(*p, protectedInQuotes) ? 2 : 1;
    char* result = static_cast<char*>(kaz::detail::allocate(length + 1));
    char* end = result;
    *end++ = '"';
    for (; *word != '\0'; ++word) {
        if (isOneOf(*word, protectedInQuotes))
            *end++ = '\\';
        *end++ = *word;
    }
    *end++ = '"';
    *end = '\0';
    return result;
}

char* unquote_word(const char* text) {
    if (text == nullptr)
        text = "";
    Unquoter measured(text, nullptr);
    measured.readAll();
    return unquoted(text, measured, &Unquoter::readAll);
}

word_status_enum next_word(const char** position, char** word) {
    *word = nullptr;
    if (*position == nullptr)
        return word_none;
    const char* from = *position;
    // A line end behind a backslash separates nothing, but begins no word either.
    while (isSeparator(*from) || (from[0] == '\\' && from[1] == '\n'))
        from += *from == '\\' ? 2 : 1;
    if (*from == '\0') {
        *position = from;
        return word_none;
    }
    Unquoter measured(from, nullptr);
    measured.readWord();
    *word = unquoted(from, measured, &Unquoter::readWord);
    // Moved on last, so that a failed allocation loses no word.
    *position = measured.position();
    return measured.unclosed() ? word_unclosed : word_found;
}
