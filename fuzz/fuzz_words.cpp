// SPDX-License-Identifier: Apache-2.0
// Quoting and reading of words: what was quoted comes back, whatever it is, and
// any line is read to its end.
#include "fuzz/harness.h"
#include "tools/files/process.h"
#include "util/owned.h"

#include <vector>

namespace {

void quotedWordComesBack(const std::string& word) {
    const std::string quoted = take(quote_word(word.c_str()));
    FUZZ_CHECK(word_needs_quotes(word.c_str()) == (quoted != word));
    FUZZ_CHECK(take(unquote_word(quoted.c_str())) == word);
    const std::string line = " " + quoted + "\t" + quoted;
    const char* position = line.c_str();
    char* read = nullptr;
    for (int i = 0; i < 2; ++i) {
        FUZZ_CHECK(next_word(&position, &read) == word_found);
        FUZZ_CHECK(take(read) == word);
    }
    FUZZ_CHECK(next_word(&position, &read) == word_none && read == nullptr);
}

/// Words that were read, quoted again and read again, are the same words.
void wordsAreStable(const std::string& line) {
    const char* position = line.c_str();
    const char* const end = line.c_str() + line.size();
    for (;;) {
        const char* const before = position;
        char* read = nullptr;
        const word_status_enum status = next_word(&position, &read);
        FUZZ_CHECK(position <= end && (status == word_none || position > before));
        if (status == word_none)
            break;
        FUZZ_CHECK(status == word_found || position == end);
        const std::string word = take(read);
        FUZZ_CHECK(word.size() <= static_cast<std::size_t>(position - before));
        quotedWordComesBack(word);
    }
    FUZZ_CHECK(position == end);
}

/// A line of words that was put together is taken apart into the same ones.
void lineComesBack(const std::vector<std::string>& words) {
    std::vector<const char*> parts;
    for (const std::string& word : words)
        parts.push_back(word.c_str());
    const KazString line = argv_to_str(static_cast<int>(parts.size()), parts.data());
    char** argv = nullptr;
    const int argc = str_to_argv(line.getValue(), &argv);
    const std::unique_ptr<char*, decltype(&std::free)> owner(argv, std::free);
    FUZZ_CHECK(argc == static_cast<int>(words.size()) && argv[argc] == nullptr);
    for (int i = 0; i < argc; ++i)
        FUZZ_CHECK(argv[i] == words[static_cast<std::size_t>(i)]);
}

void all(fuzz::Input input) {
    const std::string word = input.cText(64);
    quotedWordComesBack(word);
    lineComesBack({word, "a=b", word + word, ""});
    const std::string line = input.rest();
    wordsAreStable(line.c_str());
}

} // namespace

void fuzz::harness(Input& input) {
    Failures::whole(input, all);
}
