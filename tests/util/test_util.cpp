// SPDX-License-Identifier: Apache-2.0
// What the models of the plain functions cannot see: nulls, places of errors, limits, depth.
#include "tools/util/gnu_regex.h"

#include "owned.h"
#include "testkit/capture.h"
#include "tools/app/KazApp.h"
#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/util/detail/tree_soundness.h"
#include "tools/util/memory.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>

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

/// Counts the nodes of a balanced tree; fails where weights or sizes are wrong.
int checkBalanced(const generic_tree* root) {
    if (root == nullptr)
        return 0;
    const int left = checkBalanced(root->left);
    const int right = checkBalanced(root->right);
    EXPECT_EQ(left + right + 1, root->weight);
    EXPECT_TRUE(root->weight < 3 || std::abs(left - right) <= 1);
    return left + right + 1;
}

/// One node below the other; @p turn tells for each whether the next is left.
template <typename Turn>
generic_tree* chainOf(int size, Turn turn) {
    generic_tree* root = nullptr;
    generic_tree** link = &root;
    for (int i = 0; i < size; ++i) {
        *link = make_tree_node(element(i));
        (*link)->weight = size - i;
        link = turn(i) ? &(*link)->left : &(*link)->right;
    }
    return root;
}

} // namespace

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

TEST(GuIndexList, TextForm) {
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

TEST(Tree, AWrongWeightOrPlaceIsSeen) {
    generic_tree* root = nullptr;
    bool added = false;
    for (const int value : {2, 1, 3, 5, 4})
        root = add_tree_node(root, make_tree_node(element(value)), compare_integers, added);
    EXPECT_TRUE(kaz::detail::isSound(root, compare_integers));
    ++root->left->weight;
    EXPECT_FALSE(kaz::detail::isSound(root, compare_integers));
    --root->left->weight;
    std::swap(root->left->value, root->right->value);
    EXPECT_FALSE(kaz::detail::isSound(root, compare_integers));
    delete_tree(root, nullptr);
}

TEST(Tree, EqualValuesAreReplacedInPlace) {
    char a[] = "key", b[] = "key";
    generic_tree* root = make_tree_node(a);
    EXPECT_EQ(a, replace_tree_node(root, b, cmp_strings));
    EXPECT_EQ(b, root->value);
    delete_tree(root, nullptr);
}

TEST(Tree, AMillionNodesInARowDoNotUseUpTheStack) {
    constexpr int size = 1000000;
    const auto always = [](const void*, const void*) { return -1; };
    generic_tree* chain = chainOf(size, [](int) { return true; });
    generic_tree* copy = copy_tree(chain);
    generic_tree* zigzag = chainOf(size, [](int i) { return i % 2 != 0; });
    bool done = false;
    // Lopsided enough to be balanced at once, after walking to the far end.
    chain = add_tree_node(chain, make_tree_node(element(size)), always, done);
    EXPECT_EQ(size + 1, checkBalanced(chain));
    copy = delete_tree_node(copy, element(size - 1), compare_integers, nullptr, done);
    EXPECT_TRUE(done);
    EXPECT_EQ(size - 1, copy->weight);
    zigzag = balance_tree(zigzag, compare_integers);
    EXPECT_EQ(size, checkBalanced(zigzag));
    for (generic_tree* tree : {chain, copy, zigzag, chainOf(size, [](int) { return false; })})
        delete_tree(tree, nullptr);
}

TEST(Tree, SuppliedComparators) {
    const char* const ascending[] = {"", "A", "Aa", "a", "b", "\xE9"};
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 6; ++j)
            EXPECT_EQ((i > j) - (i < j), cmp_strings(ascending[i], ascending[j])) << i << ' ' << j;
        EXPECT_EQ(i == 0 ? 0 : 1, cmp_strings(ascending[i], nullptr));
        EXPECT_EQ(i == 0 ? 0 : -1, cmp_strings(nullptr, ascending[i]));
    }
    int low = INT_MIN, one = 1;
    const tree_comparator byPointer = cmp_ints, bySlot = compare_integers;
    EXPECT_EQ(INT_MAX, byPointer(&low, &one));
    EXPECT_LT(byPointer(&one, &low), 0); // wraps around
    EXPECT_EQ(-5, bySlot(element(-2), element(3)));
}
