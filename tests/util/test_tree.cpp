// SPDX-License-Identifier: Apache-2.0
// What a model of the tree cannot see: depth, and texts as values. The model drives the
// fuzzer's replay.

#include "owned.h"
#include "tools/util/detail/tree_soundness.h"

#include <gtest/gtest.h>

#include <climits>
#include <utility>
#include <vector>

namespace {

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

TEST(Tree, AWrongWeightOrPlaceIsSeen) {
    generic_tree* root = nullptr;
    bool added = false;
    for (int value = 0; value < 300; ++value)
        root =
            add_tree_node(root, make_tree_node(element(value * 7 % 300)), compare_integers, added);
    for (int value = 0; value < 300; value += 2)
        root = delete_tree_node(root, element(value), compare_integers, nullptr, added);
    EXPECT_TRUE(kaz::detail::isSound(nullptr, compare_integers));
    EXPECT_TRUE(kaz::detail::isSound(root, compare_integers));
    ++root->left->weight;
    EXPECT_FALSE(kaz::detail::isSound(root, compare_integers));
    --root->left->weight;
    std::swap(root->left->value, root->right->value);
    EXPECT_FALSE(kaz::detail::isSound(root, compare_integers));
    delete_tree(root, nullptr);
}

TEST(Tree, EqualValuesAreReplacedInPlace) {
    char a[] = "key", b[] = "key", other[] = "other";
    generic_tree* root = make_tree_node(a);
    EXPECT_EQ(a, replace_tree_node(root, b, cmp_strings));
    EXPECT_EQ(b, *search_tree2(root, "key", cmp_strings));
    EXPECT_EQ(nullptr, replace_tree_node(root, other, cmp_strings));
    EXPECT_EQ(b, root->value);
    EXPECT_EQ(nullptr, search_tree2(root, "x", cmp_strings));
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
    const std::vector<const char*> ascending = {"", "A", "Aa", "a", "b", "\xE9"};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j)
            EXPECT_EQ((i > j) - (i < j), cmp_strings(ascending[i], ascending[j])) << i << ' ' << j;
        EXPECT_EQ(i == 0 ? 0 : 1, cmp_strings(ascending[i], nullptr));
        EXPECT_EQ(i == 0 ? 0 : -1, cmp_strings(nullptr, ascending[i]));
    }
    int low = INT_MIN;
    int one = 1;
    EXPECT_EQ(INT_MAX, cmp_ints(&low, &one));
    const tree_comparator byPointer = cmp_ints;
    EXPECT_LT(byPointer(&one, &low), 0); // wraps around
    const tree_comparator bySlot = compare_integers;
    EXPECT_EQ(-5, bySlot(element(-2), element(3)));
}
