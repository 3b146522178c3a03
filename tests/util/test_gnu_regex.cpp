// SPDX-License-Identifier: Apache-2.0
#include "tools/util/gnu_regex.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

TEST(GnuRegex, PatternBuffersSearchAndMatch) {
    const reg_syntax_t before = re_set_syntax(RE_SYNTAX_POSIX_EXTENDED);
    re_pattern_buffer pattern = {};
    ASSERT_EQ(nullptr, re_compile_pattern("(b+)(c)?", 8, &pattern));
    re_registers registers = {};
    const char text[] = "aabbbcd";
    const auto length = static_cast<int>(std::strlen(text));
    EXPECT_EQ(2, re_search(&pattern, text, length, 0, length, &registers));
    EXPECT_EQ(5, registers.end[1]);
    EXPECT_EQ(5, registers.start[2]);
    EXPECT_EQ(4, re_search(&pattern, text, length, length, -length, nullptr));
    EXPECT_EQ(4, re_match(&pattern, text, length, 2, nullptr));
    EXPECT_EQ(-1, re_match(&pattern, text, length, 0, nullptr));
    std::free(registers.start);
    std::free(registers.end);
    regfree(&pattern);

    // A bad pattern is reported by a text.
    re_pattern_buffer bad = {};
    EXPECT_NE(nullptr, re_compile_pattern("(a", 2, &bad));
    regfree(&bad);
    EXPECT_EQ(RE_SYNTAX_POSIX_EXTENDED, re_set_syntax(before));
}

TEST(GnuRegex, CompiledExpressionsReportMatchesAndErrors) {
    regex_t expression;
    ASSERT_EQ(0, regcomp(&expression, "^([a-z]+)=(.*)$", REG_EXTENDED | REG_ICASE));
    regmatch_t matches[3];
    const std::string line = "Name=a value";
    ASSERT_EQ(0, regexec(&expression, line.c_str(), 3, matches, 0));
    EXPECT_EQ(4, matches[1].rm_eo);
    EXPECT_EQ(5, matches[2].rm_so);
    EXPECT_EQ(REG_NOMATCH, regexec(&expression, "1=2", 0, nullptr, 0));
    regfree(&expression);

    regex_t bad;
    const int code = regcomp(&bad, "[a", REG_EXTENDED);
    ASSERT_NE(0, code);
    char message[100] = "";
    const std::size_t size = regerror(code, &bad, message, sizeof message);
    EXPECT_EQ(std::strlen(message) + 1, size);
    EXPECT_STRNE("", message);
}
