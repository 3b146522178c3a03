// SPDX-License-Identifier: Apache-2.0
/// @file
/// Whether a tree holds together; for tests, which include it, and not part of the library.
#pragma once

#include "tools/util/tree.h"

namespace kaz::detail {

/// One pass over a tree, from its first value to its last one.
class TreeSoundness {
public:
    explicit TreeSoundness(tree_comparator order) : order_(order) {}

    /// Each weight counts the nodes below and its own, and each value comes behind the one
    /// before it, so that every search ends where it is. Goes as deep as the tree.
    bool holds(const generic_tree* root) {
        count(root);
        return sound_;
    }

private:
    int count(const generic_tree* node) {
        if (node == nullptr)
            return 0;
        const int before = count(node->right);
        sound_ = sound_ && (last_ == nullptr || order_(last_->value, node->value) < 0);
        last_ = node;
        const int nodes = before + count(node->left) + 1;
        sound_ = sound_ && node->weight == nodes;
        return nodes;
    }

    tree_comparator order_;
    const generic_tree* last_ = nullptr;
    bool sound_ = true;
};

inline bool isSound(const generic_tree* root, tree_comparator order) {
    return TreeSoundness(order).holds(root);
}

} // namespace kaz::detail
