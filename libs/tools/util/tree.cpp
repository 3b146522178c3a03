// SPDX-License-Identifier: Apache-2.0
// A node weighs what its subtree has nodes, itself included. Its left subtree holds the
// values behind its own, its right one those before it. Both hold before and after each
// function, and so a tree is shared with callers who walk it on their own.
//
// Callers can hand in chains of a million nodes, so nothing goes down a tree by recursion
// but balancing, which settles each level before it goes deeper. A tree becomes lopsided
// up to a threshold before it is balanced as a whole: the steps of that are prescribed,
// because tools see the shapes that result.
#include "tools/util/tree.h"

#include "tools/util/detail/compared.h"
#include "tools/util/detail/heap_ptr.h"
#include "tools/util/detail/or_empty.h"
#include "tools/util/detail/panic.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {

/// Difference in nodes between two subtrees from which on a tree is balanced.
constexpr int rebalanceThreshold = 70;

/// One flag for all trees, as insertions set it for whoever started them.
constinit bool rebalanceNeeded = false;

int weightOf(const generic_tree* node) {
    return node != nullptr ? node->weight : 0;
}

/// The nodes on the way down, so that weights can be changed on the way back once
/// the outcome is known: trees have no parent links, and the comparator is not to
/// be asked twice. Paths of usual trees need no memory of their own.
class Path {
public:
    explicit Path(const char* functionName) : functionName_(functionName) {}
    Path(const Path&) = delete;
    Path& operator=(const Path&) = delete;

    void push(generic_tree* node) {
        if (length_ == capacity_)
            grow();
        nodes_[length_++] = node;
    }

    std::size_t length() const { return length_; }
    generic_tree* operator[](std::size_t level) const { return nodes_[level]; }

    void addToWeights(int change) {
        for (std::size_t level = 0; level < length_; ++level)
            nodes_[level]->weight += change;
    }

private:
    static constexpr std::size_t inlineNodes = 64;

    void grow() {
        const std::size_t count = 2 * capacity_;
        kaz::detail::HeapPtr<generic_tree*> block(static_cast<generic_tree**>(
            kaz::detail::allocateOrPanic(count * sizeof(generic_tree*), functionName_)));
        std::memcpy(block.get(), nodes_, capacity_ * sizeof(generic_tree*));
        heap_ = std::move(block);
        nodes_ = heap_.get();
        capacity_ = count;
    }

    const char* functionName_;
    generic_tree* inline_[inlineNodes];
    kaz::detail::HeapPtr<generic_tree*> heap_;
    generic_tree** nodes_ = inline_;
    std::size_t capacity_ = inlineNodes;
    std::size_t length_ = 0;
};

/// Lets the next node come from memory while the comparator decides which one it
/// is: finding one of 100,000 values took 440 ns without this, and takes 230.
void fetchChildren(const generic_tree* node) {
    __builtin_prefetch(node->left);
    __builtin_prefetch(node->right);
}

/// Descends to the link to the value equal to @p key, or to the empty one where
/// it would be, and records the nodes passed.
generic_tree** descend(generic_tree** link, const void* key, tree_comparator cmp, Path& path) {
    // The comparator has the value of the tree first: negative means that the key is greater, and
    // greater values lie on the left.
    for (generic_tree* node = *link; node != nullptr; node = *link) {
        fetchChildren(node);
        const int order = cmp(node->value, key);
        if (order == 0)
            break;
        path.push(node);
        link = order < 0 ? &node->left : &node->right;
    }
    return link;
}

/// Adds the weight of a new node to those above it and tells whether one of them
/// is lopsided now. The new node does not count as a child yet. What lies beside
/// the path follows from the weights on it: looking there would double the time,
/// as it would meet one cache line more at each level.
bool addWeight(const Path& path, int added) {
    bool lopsided = false;
    int onPath = 0;    // weight of the child on the path, of the time before
    int below = added; // the same with the new node
    for (std::size_t level = path.length(); level-- > 0;) {
        generic_tree* node = path[level];
        node->weight += added;
        const int difference = onPath - (node->weight - 1 - below);
        lopsided |= difference >= rebalanceThreshold || difference <= -rebalanceThreshold;
        onPath = below = node->weight;
    }
    return lopsided;
}

typedef generic_tree* generic_tree::*Side;

Side opposite(Side side) {
    return side == &generic_tree::left ? &generic_tree::right : &generic_tree::left;
}

/// Takes the child on @p side with all below it away from @p node.
generic_tree* detach(generic_tree* node, Side side) {
    generic_tree* child = node->*side;
    node->weight -= child->weight;
    node->*side = nullptr;
    return child;
}

/// Hangs @p subtree, whose values all lie beyond those of @p root, at its end
/// on @p side.
void attachAtEnd(generic_tree* root, Side side, generic_tree* subtree) {
    for (generic_tree* node = root;; node = node->*side) {
        node->weight += subtree->weight;
        if (node->*side == nullptr) {
            node->*side = subtree;
            return;
        }
    }
}

bool leansLeft(const generic_tree* node) {
    return node->left != nullptr &&
           (node->right == nullptr || node->left->weight > node->right->weight);
}

bool haveEqualWeights(const generic_tree* a, const generic_tree* b) {
    return a != nullptr && b != nullptr && a->weight == b->weight;
}

/// One step towards balance: the heavy child, or the inner child of that when
/// it is the heavier one, becomes the root. Null when the weights are wrong.
generic_tree* rotate(generic_tree* root, Side heavy) {
    generic_tree* child = root->*heavy;
    if (child == nullptr)
        return nullptr;
    const Side inner = opposite(heavy);
    const bool outerHeavier = leansLeft(child) == (heavy == &generic_tree::left);
    if (haveEqualWeights(child->left, child->right) || outerHeavier) {
        detach(root, heavy);
        attachAtEnd(child, inner, root);
        return child;
    }
    if (child->*inner == nullptr)
        return nullptr;
    detach(root, heavy);
    generic_tree* grandchild = detach(child, inner);
    attachAtEnd(grandchild, inner, root);
    attachAtEnd(grandchild, heavy, child);
    return grandchild;
}

/// Rotates at @p root until the sizes of its subtrees differ by one at most.
generic_tree* settle(generic_tree* root) {
    // Every shape settles in fewer steps than it has nodes; wrong weights could
    // go round for ever.
    for (int steps = root->weight; steps > 0; --steps) {
        const int left = weightOf(root->left);
        const int right = weightOf(root->right);
        if (left - right <= 1 && right - left <= 1)
            break;
        generic_tree* next =
            rotate(root, left > right ? &generic_tree::left : &generic_tree::right);
        if (next == nullptr)
            break;
        root = next;
    }
    return root;
}

/// A subtree is about half as heavy as the settled tree around it, which makes
/// 31 levels; only wrong weights could lead deeper.
constexpr int maxLevels = 64;

generic_tree* balance(generic_tree* root, int level) {
    if (weightOf(root) < 3 || level == maxLevels)
        return root;
    root = settle(root);
    root->left = balance(root->left, level + 1);
    root->right = balance(root->right, level + 1);
    return root;
}

/// The end of the links on @p side from @p node.
generic_tree* endOf(generic_tree* node, Side side) {
    while (node != nullptr && node->*side != nullptr)
        node = node->*side;
    return node;
}

/// Takes the node at the end of @p side out of the tree at @p link.
generic_tree* unlinkEnd(generic_tree** link, Side side) {
    while ((*link)->*side != nullptr) {
        --(*link)->weight;
        link = &((*link)->*side);
    }
    generic_tree* end = *link;
    *link = end->*opposite(side);
    return end;
}

/// Gives a node with two children the value next to its own from its heavier
/// side; returns the node that held it.
/// From the heavier side, so that many removals do not make the tree lopsided.
generic_tree* takeNeighbour(generic_tree* node) {
    const Side side =
        node->left->weight > node->right->weight ? &generic_tree::left : &generic_tree::right;
    generic_tree* end = unlinkEnd(&(node->*side), opposite(side));
    node->value = end->value;
    --node->weight;
    return end;
}

void releaseNode(generic_tree* node, tree_release release) {
    if (release != nullptr)
        release(node->value);
    std::free(node);
}

/// Copies a tree without a stack: a copy whose right subtree is still to come
/// keeps its source in its value slot and the next such copy in its right link.
class TreeCopier {
public:
    // Only after a failure is something left: nodes that wait hold a source in the place of their
    // value, and must become ordinary ones before the tree can be deleted.
    ~TreeCopier() {
        if (result_ == nullptr)
            return;
        while (pending_ != nullptr)
            takePending();
        delete_tree(result_, nullptr);
    }

    generic_tree* copy(const generic_tree* source) {
        copyLeftward(source, &result_);
        while (pending_ != nullptr) {
            generic_tree* node = pending_;
            const generic_tree* from = takePending();
            copyLeftward(from->right, &node->right);
        }
        generic_tree* result = result_;
        result_ = nullptr;
        return result;
    }

private:
    void copyLeftward(const generic_tree* source, generic_tree** link) {
        for (; source != nullptr; source = source->left) {
            generic_tree* node = make_tree_node(source->value);
            node->weight = source->weight;
            *link = node;
            link = &node->left;
            if (source->right != nullptr) {
                node->value = const_cast<generic_tree*>(source);
                node->right = pending_;
                pending_ = node;
            }
        }
    }

    /// Completes the latest pending node; gives its source.
    const generic_tree* takePending() {
        generic_tree* node = pending_;
        const auto* source = static_cast<const generic_tree*>(node->value);
        pending_ = node->right;
        node->right = nullptr;
        node->value = source->value;
        return source;
    }

    generic_tree* result_ = nullptr;
    generic_tree* pending_ = nullptr;
};

} // namespace

generic_tree* make_tree_node(void* value) {
    void* block = kaz::detail::allocateOrPanic(sizeof(generic_tree), "make_tree_node");
    return new (block) generic_tree{value, nullptr, nullptr, 1};
}

generic_tree* add_tree_node(generic_tree* root, generic_tree* node, tree_comparator cmp,
                            bool& added) {
    added = false;
    rebalanceNeeded = false;
    if (node == nullptr)
        return root;
    Path path("add_tree_node");
    generic_tree** link = descend(&root, node->value, cmp, path);
    if (*link != nullptr)
        return root;
    added = true;
    *link = node;
    // The comparator may have added to another tree.
    if (addWeight(path, node->weight))
        rebalanceNeeded = true;
    return rebalanceNeeded ? balance_tree(root, cmp) : root;
}

void* search_tree(generic_tree* root, const void* key, tree_comparator cmp) {
    void** slot = search_tree2(root, key, cmp);
    return slot != nullptr ? *slot : nullptr;
}

void** search_tree2(generic_tree* root, const void* key, tree_comparator cmp) {
    while (root != nullptr) {
        fetchChildren(root);
        const int order = cmp(root->value, key);
        if (order == 0)
            return &root->value;
        root = order < 0 ? root->left : root->right;
    }
    return nullptr;
}

void* replace_tree_node(generic_tree* root, void* value, tree_comparator cmp) {
    void** slot = search_tree2(root, value, cmp);
    return slot != nullptr ? std::exchange(*slot, value) : nullptr;
}

void* tree_min_value(generic_tree* root) {
    const generic_tree* end = endOf(root, &generic_tree::right);
    return end != nullptr ? end->value : nullptr;
}

void* tree_max_value(generic_tree* root) {
    const generic_tree* end = endOf(root, &generic_tree::left);
    return end != nullptr ? end->value : nullptr;
}

/// Nothing is balanced here. The value is released first, while its node is still in the tree.
generic_tree* delete_tree_node(generic_tree* root, const void* key, tree_comparator cmp,
                               tree_release release, bool& deleted) {
    deleted = false;
    Path path("delete_tree_node");
    generic_tree** link = descend(&root, key, cmp, path);
    generic_tree* node = *link;
    if (node == nullptr)
        return root;
    if (release != nullptr)
        release(node->value);
    path.addToWeights(-1);
    if (node->left != nullptr && node->right != nullptr)
        node = takeNeighbour(node);
    else
        *link = node->left != nullptr ? node->left : node->right;
    std::free(node);
    deleted = true;
    return root;
}

void delete_tree(generic_tree* root, tree_release release) {
    // On the way down, a left link is turned round to lead back to the parent
    // and a right link that was followed is cut: no stack, no memory.
    generic_tree* parent = nullptr;
    for (generic_tree* node = root; node != nullptr;) {
        if (node->left == nullptr && node->right == nullptr) {
            releaseNode(node, release);
            while (parent != nullptr && parent->right == nullptr)
                releaseNode(std::exchange(parent, parent->left), release);
            node = parent != nullptr ? std::exchange(parent->right, nullptr) : nullptr;
            continue;
        }
        generic_tree* next =
            node->left != nullptr ? node->left : std::exchange(node->right, nullptr);
        node->left = std::exchange(parent, node);
        node = next;
    }
}

generic_tree* copy_tree(generic_tree* root) {
    return TreeCopier().copy(root);
}

generic_tree* copy_tree_deep(generic_tree* root, tree_value_copy copy) {
    if (root == nullptr)
        return nullptr;
    void* value = copy(root->value);
    generic_tree* result = copy_tree(root);
    result->value = value;
    return result;
}

generic_tree* balance_tree(generic_tree* root, tree_comparator) {
    return balance(root, 0);
}

int cmp_strings(const char* a, const char* b) {
    const int order = std::strcmp(kaz::detail::orEmpty(a), kaz::detail::orEmpty(b));
    return kaz::detail::signOf(order);
}

int cmp_strings(const void* a, const void* b) {
    return cmp_strings(static_cast<const char*>(a), static_cast<const char*>(b));
}

int cmp_ints(int* a, int* b) {
    return compare_integers(*a, *b);
}

int cmp_ints(const void* a, const void* b) {
    return compare_integers(*static_cast<const int*>(a), *static_cast<const int*>(b));
}

/// The difference itself is the result, which callers see; as unsigned numbers it wraps where
/// signed ones would overflow, and the order is then wrong for distances beyond 2^31.
int compare_integers(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}

int compare_integers(const void* a, const void* b) {
    return compare_integers(static_cast<int>(reinterpret_cast<std::intptr_t>(a)),
                            static_cast<int>(reinterpret_cast<std::intptr_t>(b)));
}
