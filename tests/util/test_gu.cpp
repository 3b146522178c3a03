// SPDX-License-Identifier: Apache-2.0
// What the models of the fuzzer cannot see: places of errors, and limits.

#include "owned.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

using Indices = Owned<gu_index_list>;

std::string textOf(const Indices& list) {
    return take(gu_index_list_text(list.get()));
}

Indices parse(const std::string& text) {
    int error = -2;
    Indices list(gu_index_list_parse(text.c_str(), &error));
    EXPECT_EQ(-1, error) << text;
    return list;
}

} // namespace

TEST(GuIndexList, TextForm) {
    EXPECT_EQ("1-3,7", textOf(parse("1-3,7")));
    EXPECT_EQ("-5--2,0-4,9", textOf(parse("  9 , 3-4,0 - 2,1-3\t,-5--2 ")));
    EXPECT_EQ("", textOf(parse("  ")));
    EXPECT_EQ("", textOf(Indices(gu_index_list_parse(nullptr, nullptr))));
    const struct {
        const char* text;
        int position;
    } bad[] = {
        {"x", 0},     {"1,", 2},    {",1", 0},         {"1-", 2},  {"3-1", 1},
        {"1 2", 2},   {"1-3-5", 3}, {"2147483648", 0}, {"--1", 0}, {"99999999999999999999", 0},
        {"1,, 2", 2}, {"+1", 0}};
    for (const auto& row : bad) {
        int position = -2;
        EXPECT_EQ(nullptr, gu_index_list_parse(row.text, &position)) << row.text;
        EXPECT_EQ(row.position, position) << row.text;
    }
}

TEST(GuIndexList, TheWholeRangeOfIntegers) {
    const Indices all = parse("-2147483648-2147483647");
    EXPECT_EQ(1LL << 32, gu_index_list_size(all.get()));
    EXPECT_FALSE(gu_index_list_add(all.get(), INT_MIN));
    gu_index_list_remove_range(all.get(), INT_MIN + 1, INT_MAX - 1);
    auto i = gu_index_list_init(all.get());
    EXPECT_EQ(INT_MIN, i.index);
    gu_index_list_next(&i);
    EXPECT_EQ(INT_MAX, i.index);
    gu_index_list_next(&i);
    EXPECT_TRUE(gu_index_list_done(i));
    gu_index_list_add_range(all.get(), 5, INT_MAX);
    EXPECT_EQ("-2147483648,5-2147483647", textOf(all));
    int first = 0;
    int last = 0;
    EXPECT_TRUE(gu_index_list_find_range(all.get(), 100, &first, &last));
    EXPECT_EQ(100, first);
    EXPECT_EQ(INT_MAX, last);
    EXPECT_TRUE(gu_index_list_find_range(all.get(), -7, &first, &last));
    EXPECT_EQ(5, first);
    gu_index_list_clear(all.get());
    EXPECT_EQ("", textOf(all));
}
