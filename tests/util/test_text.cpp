// SPDX-License-Identifier: Apache-2.0
#include "kit/capture.h"
#include "tools/app/KazApp.h"
#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/util/memory.h"

#include "owned.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

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

} // namespace

TEST(Text, NullsReadAsEmpty) {
    EXPECT_EQ(nullptr, mkcpy(nullptr));
    EXPECT_EQ("b", take(concat(nullptr, "b")));
    const char* parts[] = {"a"};
    EXPECT_EQ("", take(concat_texts(parts, -1, "-")));
    EXPECT_EQ("", take(concat_texts(nullptr, 3, nullptr)));
    EXPECT_EQ("ab", take(concat_onto(concat_onto(nullptr, "ab"), nullptr)));
    EXPECT_FALSE(is_pattern(nullptr, 1));
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
    const Owned<dd_buffer> buffer(dd_create(0));
    EXPECT_EQ(0, dd_compare(buffer.get(), nullptr));
    dd_add_bytes(buffer.get(), "a\0b", 3);
    EXPECT_EQ('b', dd_char_at(buffer.get(), 2));
    EXPECT_EQ('\0', dd_char_at(buffer.get(), 3));
    EXPECT_EQ('\0', dd_char_at(buffer.get(), -1));
    EXPECT_THROW(dd_add_fill(buffer.get(), 'x', INT_MAX), KazMemoryException);
    EXPECT_EQ(3, dd_length(buffer.get()));
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
