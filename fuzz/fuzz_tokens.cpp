// SPDX-License-Identifier: Apache-2.0
// The four tokenizers beside a splitter that walks once over the text.

#include "fuzz/harness.h"
#include "strings/string_kit.h"

#include "tools/strings/KazQuotedStringTokenizer.h"
#include "tools/strings/KazWQuotedStringTokenizer.h"

#include <string>
#include <vector>

namespace {

using Tokens = std::vector<std::string>;

/// What a tokenizer is made from.
struct Work {
    std::string text, delimiters, quotes;
    char escape;
    bool isQuoted;
};

bool isIn(const std::string& set, char c) {
    return set.find(c) != std::string::npos;
}

std::string trimmed(const std::string& text, const std::string& set) {
    const std::size_t first = text.find_first_not_of(set);
    const std::size_t last = text.find_last_not_of(set);
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

/// The tokens, the k-th with a run behind it skipped where @p skipRuns(k) is true.
template <class Skip>
Tokens expected(const Work& work, Skip skipRuns) {
    const std::string text = trimmed(work.text, work.delimiters);
    if (text.empty())
        return {};
    Tokens tokens(1);
    char open = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool isEscape = work.isQuoted && c == work.escape;
        const bool isQuote = work.isQuoted && isIn(work.quotes, c);
        if (isEscape && i + 1 < text.size()) {
            tokens.back() += c;
            tokens.back() += text[++i];
        } else if (!isEscape && open == 0 && !isQuote && isIn(work.delimiters, c)) {
            while (skipRuns(tokens.size() - 1) && isIn(work.delimiters, text[i + 1]))
                ++i;
            tokens.emplace_back();
        } else {
            if (!isEscape && c == open)
                open = 0;
            else if (!isEscape && open == 0 && isQuote)
                open = c;
            tokens.back() += c;
        }
    }
    for (std::string& token : tokens)
        if (!token.empty() && token.back() == '\r')
            token.pop_back();
    return tokens;
}

template <class String, class Tokenizer, class Skip>
void check(Tokenizer tokenizer, const Tokens& tokens, Skip skipRuns) {
    FUZZ_CHECK(tokenizer.isDone() == tokens.empty());
    Tokenizer assigned = tokenizer;
    for (std::size_t k = 0; k < tokens.size(); ++k) {
        FUZZ_CHECK(!tokenizer.isFinished());
        // A copy taken in between goes on by itself.
        const Tokenizer copy = tokenizer;
        FUZZ_CHECK(plain(tokenizer.nextString(skipRuns(k))) == tokens[k]);
        assigned = copy;
        assigned = *&assigned;
        FUZZ_CHECK(plain(assigned.nextString(skipRuns(k))) == tokens[k]);
    }
    FUZZ_CHECK(tokenizer.isDone() && tokenizer.nextString(false).isEmpty());
}

template <class String, class Tokenizer, class Quoted, class Skip>
void checkWidth(const Work& work, const Tokens& tokens, Skip skipRuns) {
    using Text = TestText<String>;
    const String text{Text(work.text)};
    if (work.isQuoted)
        check<String>(
            Quoted(text, Text(work.delimiters), Text(work.quotes), wideChar<String>(work.escape)),
            tokens, skipRuns);
    else
        check<String>(Tokenizer(text, Text(work.delimiters)), tokens, skipRuns);
}

void all(fuzz::Input input) {
    static constexpr std::string_view marks = ",; xyz'\"\\\r|-";
    Work work;
    work.isQuoted = input.flag();
    work.delimiters = input.textOf(marks, 7);
    work.quotes = input.textOf("'\"|y", 3);
    work.escape = input.pick(std::string_view("\\y^"));
    const unsigned runs = input.byte();
    const auto skipRuns = [runs](std::size_t k) { return (runs >> k % 8 & 1U) != 0; };
    // Few different characters, so that marks are frequent; each token may be of
    // any length.
    while (!input.empty() && work.text.size() < 20000) {
        const std::uint8_t next = input.byte();
        if (next < 4)
            work.text += std::string(input.between<std::size_t>(0, 80), 'w');
        else
            work.text += "ab,; xyz'\"\\\r|-"[next % 14];
    }
    const Tokens tokens = expected(work, skipRuns);
    checkWidth<KazString, KazStringTokenizer, KazQuotedStringTokenizer>(work, tokens, skipRuns);
    checkWidth<KazWString, KazWStringTokenizer, KazWQuotedStringTokenizer>(work, tokens, skipRuns);
}

} // namespace

void fuzz::harness(Input& input) {
    Failures::whole(input, all);
}
