#include "kit/capture.h"
#include "kit/host.h"
#include "kit/process.h"
#include "kit/random.h"
#include "tools/app/KazApp.h"
#include "tools/app/KazMemoryException.h"
#include "tools/util/memory.h"
#include "tools/util/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

/// The text as a string; frees it.
std::string take(char* text) {
    const std::unique_ptr<char, decltype(&std::free)> owner(text, std::free);
    return text != nullptr ? text : "(null)";
}

std::vector<std::string> wordsOf(const char* line, word_status_enum* status) {
    std::vector<std::string> words;
    char* word = nullptr;
    word_status_enum latest = word_found;
    while ((latest = next_word(&line, &word)) != word_none) {
        *status = latest;
        words.push_back(take(word));
    }
    return words;
}

struct DestroyBuffer {
    void operator()(dd_buffer* buffer) const { dd_destroy(buffer); }
};
using Buffer = std::unique_ptr<dd_buffer, DestroyBuffer>;

std::string textOf(const Buffer& buffer) {
    EXPECT_EQ('\0', dd_text(buffer.get())[dd_length(buffer.get())]);
    return std::string(dd_text(buffer.get()), static_cast<std::size_t>(dd_length(buffer.get())));
}

} // namespace

TEST(Text, CopiesAndConcatenations) {
    EXPECT_EQ("abc", take(mkcpy("abc")));
    EXPECT_EQ(nullptr, mkcpy(nullptr));
    EXPECT_EQ("ab", take(mkncpy("abc", 2)));
    EXPECT_EQ("abc", take(mkncpy("abc", 9)));
    EXPECT_EQ("", take(mkncpy("abc", -1)));
    EXPECT_EQ("b", take(concat(nullptr, "b")));
    EXPECT_EQ("abc", take(concat3("a", "b", "c")));
    EXPECT_EQ("abcd", take(concat4("a", "b", "c", "d")));
    const char* parts[] = {"a", nullptr, "bc"};
    EXPECT_EQ("a, , bc", take(concat_texts(parts, 3, ", ")));
    EXPECT_EQ("", take(concat_texts(parts, -1, "-")));
    EXPECT_EQ("", take(concat_texts(nullptr, 3, nullptr)));
    char* grown = concat_onto(nullptr, "ab");
    std::string expected = "ab";
    for (int i = 0; i < 10; ++i, expected += expected)
        grown = concat_onto(grown, grown); // its own text, from a block that moves
    grown = concat_onto(grown, grown + 2046);
    EXPECT_EQ(expected + "ab", take(concat_onto(grown, nullptr)));
}

TEST(Text, PatternsAndReplacement) {
    for (const char* pattern : {"*", "a?", "x*y"})
        EXPECT_TRUE(is_pattern(pattern, 0) && is_pattern(pattern, 1)) << pattern;
    EXPECT_FALSE(is_pattern("a[12]", 0));
    EXPECT_TRUE(is_pattern("a[12]", 1));
    for (const char* name : {"", "plain.txt", "a-b]"})
        EXPECT_FALSE(is_pattern(name, 1)) << name;
    EXPECT_FALSE(is_pattern(nullptr, 1));
    EXPECT_EQ("a--b--", take(string_replace_char("a/b/", '/', "--")));
    EXPECT_EQ("ab", take(string_replace_char("/a/b", '/', nullptr)));
    EXPECT_EQ("a/b", take(string_replace_char("a/b", '\0', "x")));
    EXPECT_EQ(nullptr, string_replace_char(nullptr, 'a', "b"));
    EXPECT_EQ(0, kaz_fast_stricmp(nullptr, ""));
    EXPECT_EQ(-1, kaz_fast_stricmp(nullptr, "a"));
}

TEST(Words, AreReadAsAShellReadsThem) {
    const struct {
        const char* line;
        std::vector<std::string> words;
        word_status_enum status;
    } rows[] = {
        {"", {}, word_found},
        {" \t\n ", {}, word_found},
        {"a b\tc\n", {"a", "b", "c"}, word_found},
        {"'a b' \"c d\"e\\ f", {"a b", "c de f"}, word_found},
        {"'' \"\"", {"", ""}, word_found},
        {"'a\\b' \"a\\b\" a\\b", {"a\\b", "a\\b", "ab"}, word_found},
        {"\"\\\"\\\\\\$\\`\"", {"\"\\$`"}, word_found},
        {"a\\\nb \\\n \"c\\\nd\"", {"ab", "cd"}, word_found},
        {"a\\", {"a\\"}, word_found},
        {"x 'a b", {"x", "a b"}, word_unclosed},
        {"\"a\\\"", {"a\""}, word_unclosed},
    };
    for (const auto& row : rows) {
        word_status_enum status = word_found;
        EXPECT_EQ(row.words, wordsOf(row.line, &status)) << row.line;
        EXPECT_EQ(row.status, status) << row.line;
    }
    const char* nowhere = nullptr;
    char* word = nullptr;
    EXPECT_EQ(word_none, next_word(&nowhere, &word));
}

TEST(Words, QuotingIsUndoneByUnquotingByReadingAndByTheShell) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    std::string line;
    std::vector<std::string> words;
    std::string shown;
    for (int round = 0; round < 2000; ++round) {
        words.push_back(rng.text(6, "ab \t\n'\"\\$`*?;|&<>(){}[]~#!=%\x01\xE9"));
        const std::string quoted = take(quote_word(words.back().c_str()));
        ASSERT_EQ(words.back(), take(unquote_word(quoted.c_str())));
        EXPECT_EQ(quoted == words.back(), !word_needs_quotes(words.back().c_str()));
        line += quoted + " ";
        shown += words.back() + "\x02";
    }
    word_status_enum status = word_found;
    EXPECT_EQ(words, wordsOf(line.c_str(), &status));
    EXPECT_EQ(word_found, status);
    if (!kit::hasDrives) { // these are the words of the other hosts' shells
        const kit::Result shell = kit::run({"/bin/sh", "-c", "printf '%s\\002' " + line});
        EXPECT_EQ(shown, shell.out);
    }
    EXPECT_EQ("\"\"", take(quote_word(nullptr)));
    EXPECT_EQ("caf\xE9", take(quote_word("caf\xE9")));
    EXPECT_EQ("a b", take(unquote_word("a b")));
    EXPECT_EQ("", take(unquote_word(nullptr)));
}

TEST(CharacterBuffer, NullBuffersAndLimits) {
    dd_add_text(nullptr, "x");
    dd_add_format(nullptr, "%d", 1);
    dd_insert(nullptr, 0, "x");
    dd_remove(nullptr, 0, 1);
    EXPECT_EQ(nullptr, dd_copy(nullptr));
    EXPECT_EQ("", take(dd_take(nullptr)));
    const Buffer buffer(dd_create(0));
    EXPECT_EQ(0, dd_compare(buffer.get(), nullptr));
    dd_add_bytes(buffer.get(), "a\0b", 3);
    EXPECT_EQ('b', dd_char_at(buffer.get(), 2));
    EXPECT_EQ('\0', dd_char_at(buffer.get(), 3));
    EXPECT_EQ('\0', dd_char_at(buffer.get(), -1));
    EXPECT_THROW(dd_add_fill(buffer.get(), 'x', INT_MAX), KazMemoryException);
    EXPECT_EQ(std::string("a\0b", 3), textOf(buffer));
}

TEST(Memory, PanicNamesTheFunctionInDebugModeOnly) {
    KazApp* app = KazApp::getInstance();
    ASSERT_NE(nullptr, app);
    const bool before = app->getDebugFlag();
    kit::Capture capture;
    app->setDebugFlag(false);
    EXPECT_THROW(memory_panic("quiet"), KazMemoryException);
    app->setDebugFlag(true);
    EXPECT_THROW(memory_panic("some_function"), KazMemoryException);
    EXPECT_THROW(memory_panic(nullptr), KazMemoryException);
    app->setDebugFlag(before);
    EXPECT_EQ("Memory allocation failed in function 'some_function', exiting.\n"
              "Memory allocation failed in function '(null)', exiting.\n",
              capture.err());
}
