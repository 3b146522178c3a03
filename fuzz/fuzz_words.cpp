// SPDX-License-Identifier: Apache-2.0
// Quoting and reading of words: what was quoted comes back, whatever it is, and
// any line is read to its end.
#include "fuzz/check.h"
#include "fuzz/failures.h"
#include "fuzz/input.h"
#include "tools/util/text.h"

#include <memory>

namespace {

std::string take(char* text) {
    FUZZ_CHECK(text != nullptr);
    const std::unique_ptr<char, decltype(&std::free)> owner(text, std::free);
    return text;
}

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

void all(fuzz::Input input) {
    quotedWordComesBack(input.cText(64));
    const std::string line = input.rest();
    wordsAreStable(line.c_str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    fuzz::Failures failures(input);
    failures.whole([&] { all(input); });
    return 0;
}
