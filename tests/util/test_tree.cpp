// SPDX-License-Identifier: Apache-2.0
// What a model of the tree cannot see: depth, and texts as values. The model drives the
// fuzzer's replay.

#include "owned.h"
#include "tools/util/detail/tree_soundness.h"

#include <gtest/gtest.h>

#include <climits>
#include <utility>

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
