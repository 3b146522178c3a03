// SPDX-License-Identifier: Apache-2.0
/// @file
/// Binary search trees of untyped values that keep the size of every subtree
/// and rebalance themselves by size when an insertion leaves a node lopsided.
///
/// A tree is a pointer to its root node, null for the empty tree; functions
/// that may change the root return the new one. The comparator is always called
/// with the stored value first and the probe second. A negative result leads to
/// `left`, a positive one to `right`: with a subtracting comparator the greater
/// values are on the left.
///
/// Nodes come from malloc and go with free; the values belong to the caller,
/// who passes a release function where the tree is to dispose of them. No
/// function uses stack in proportion to the depth of a tree. One flag serves
/// all trees: only one insertion runs at a time.
///
/// @code
///   generic_tree* root = nullptr;
///   bool added = false;
///   generic_tree* node = make_tree_node(name);
///   root = add_tree_node(root, node, cmp_strings, added);
///   if (!added)
///       free(node);
/// @endcode
#pragma once

#include "tools/export.h"

#include <cstddef>

/// A node, and with it the subtree that hangs from it.
struct generic_tree {
    void* value;         ///< the caller's; looked into by comparators only
    generic_tree* left;  ///< values for which the comparator is negative
    generic_tree* right; ///< values for which the comparator is positive
    int weight;          ///< nodes of the subtree that starts here, this one included
};

/// Order of two values: negative when @p stored comes before @p probe, 0 when they count as
/// equal, positive when it comes after.
typedef int (*tree_comparator)(const void* stored, const void* probe);
/// Disposes of a value that leaves a tree.
typedef void (*tree_release)(void* value);
/// Gives a duplicate of @p value.
typedef void* (*tree_value_copy)(void* value);

/// A node of weight 1 without children. Never null: memory exhaustion ends in
/// `memory_panic`.
KAZ_API generic_tree* make_tree_node(void* value);

/// Inserts @p node, alone or with the subtree that hangs from it, whose weight
/// counts along the path. @p added is false when an equal value is in the tree:
/// the tree is unchanged and the node stays the caller's. When the subtrees of
/// a node on the path then differ by 70 nodes or more (the new node does not
/// count as a child yet), the whole tree is balanced. A null @p node adds nothing.
KAZ_API generic_tree* add_tree_node(generic_tree* root, generic_tree* node, tree_comparator cmp,
                                    bool& added);

/// The stored value that is equal to @p key, or null.
KAZ_API void* search_tree(generic_tree* root, const void* key, tree_comparator cmp);

/// The place of that value in its node, good until the node goes, or null. What
/// is written there must compare the same way.
KAZ_API void** search_tree2(generic_tree* root, const void* key, tree_comparator cmp);

/// Stores @p value in the node with an equal value and returns what was there;
/// null, with the tree unchanged, when there is none.
KAZ_API void* replace_tree_node(generic_tree* root, void* value, tree_comparator cmp);

/// The value at the end of the `right` links; null for the empty tree.
KAZ_API void* tree_min_value(generic_tree* root);

/// The value at the end of the `left` links; null for the empty tree.
KAZ_API void* tree_max_value(generic_tree* root);

/// Removes the value equal to @p key after passing it to @p release (unless
/// null) and tells in @p deleted whether there was one. A node with two
/// children takes over the neighbouring value of its heavier side, of the right
/// one when they weigh the same. @p cmp is asked on the way to @p key only.
/// Never rebalances.
KAZ_API generic_tree* delete_tree_node(generic_tree* root, const void* key, tree_comparator cmp,
                                       tree_release release, bool& deleted);

/// Releases all nodes, each after its left and right subtree and after passing
/// its value to @p release (unless null). Allocates nothing.
KAZ_API void delete_tree(generic_tree* root, tree_release release);

/// A tree of new nodes in the same shape with the same value pointers. When it
/// ends in `memory_panic`, nothing of it is left.
KAZ_API generic_tree* copy_tree(generic_tree* root);

/// The same, with the root's value passed through @p copy. Only this one value
/// is duplicated; all others are shared with @p root. What @p copy gave is lost
/// when this ends in `memory_panic`.
KAZ_API generic_tree* copy_tree_deep(generic_tree* root, tree_value_copy copy);

/// Balances by size: at every node of weight 3 or more the subtrees then differ
/// by at most one node. Keeps the order without asking @p cmp, which is taken
/// for symmetry. Allocates nothing; expects correct weights, and leaves nodes
/// alone whose weights contradict their children.
KAZ_API generic_tree* balance_tree(generic_tree* root, tree_comparator cmp);

/// @name Comparators
/// Each comes with the parameters of its values and as a `tree_comparator`.
/// @{

/// Bytes as unsigned characters: exactly -1, 0 or 1. Null and "" are equal and
/// less than any other text.
KAZ_API int cmp_strings(const char* a, const char* b);
KAZ_API int cmp_strings(const void* a, const void* b);
inline int cmp_strings(std::nullptr_t, std::nullptr_t) {
    return 0;
}

/// *a - *b, wrapping around.
KAZ_API int cmp_ints(int* a, int* b);
KAZ_API int cmp_ints(const void* a, const void* b);

/// a - b, wrapping around, for value slots that hold the integers themselves.
KAZ_API int compare_integers(int a, int b);
KAZ_API int compare_integers(const void* a, const void* b);
/// @}
