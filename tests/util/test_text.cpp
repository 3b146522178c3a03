// SPDX-License-Identifier: Apache-2.0
#include "tools/util/gnu_regex.h"

#include "testkit/capture.h"
#include "tools/app/KazApp.h"
#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/util/memory.h"

#include "owned.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

TEST(Text, NullsReadAsEmpty) {
    EXPECT_EQ(nullptr, mkcpy(nullptr));
    EXPECT_EQ("b", take(concat(nullptr, "b")));
    EXPECT_EQ("", take(concat_texts(nullptr, 3, nullptr)));
    EXPECT_EQ("ab", take(concat_onto(concat_onto(nullptr, "ab"), nullptr)));
    EXPECT_FALSE(is_pattern(nullptr, 1));
    EXPECT_EQ("ab", take(string_replace_char("/a/b", '/', nullptr)));
    EXPECT_EQ("a/b", take(string_replace_char("a/b", '\0', "x")));
    EXPECT_EQ(nullptr, string_replace_char(nullptr, 'a', "b"));
    const char* nowhere = nullptr;
    char* word = nullptr;
    EXPECT_EQ(word_none, next_word(&nowhere, &word));
    EXPECT_EQ("\"\"", take(quote_word(nullptr)));
    EXPECT_EQ("", take(unquote_word(nullptr)));
    EXPECT_EQ(0, kaz_fast_stricmp(nullptr, ""));
    EXPECT_EQ(-1, kaz_fast_stricmp(nullptr, "a"));
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
    moxkit::Capture capture;
    for (const bool debug : {false, true}) {
        app->setDebugFlag(debug);
        EXPECT_THROW(memory_panic("some_function"), KazMemoryException);
    }
    EXPECT_THROW(memory_panic(nullptr), KazMemoryException);
    app->setDebugFlag(false);
    EXPECT_EQ("Memory allocation failed in function 'some_function', exiting.\n"
              "Memory allocation failed in function '(null)', exiting.\n",
              capture.err());
}

TEST(GnuRegex, BothInterfacesAreThere) {
    const reg_syntax_t before = re_set_syntax(RE_SYNTAX_POSIX_EXTENDED);
    re_pattern_buffer pattern = {};
    ASSERT_EQ(nullptr, re_compile_pattern("(b+)(c)?", 8, &pattern));
    EXPECT_EQ(RE_SYNTAX_POSIX_EXTENDED, re_set_syntax(before));
    EXPECT_EQ(2, re_search(&pattern, "aabbbcd", 7, 0, 7, nullptr));
    EXPECT_EQ(4, re_match(&pattern, "aabbbcd", 7, 2, nullptr));
    regfree(&pattern);
    char message[100] = "";
    EXPECT_LT(1U, regerror(regcomp(&pattern, "[a", REG_EXTENDED), &pattern, message, 100));
    ASSERT_EQ(0, regcomp(&pattern, "^([a-z]+)=(.*)$", REG_EXTENDED | REG_ICASE));
    regmatch_t matches[3];
    ASSERT_EQ(0, regexec(&pattern, "Name=a value", 3, matches, 0));
    EXPECT_EQ(5, matches[2].rm_so);
    regfree(&pattern);
}
