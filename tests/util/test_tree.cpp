// The tree against two references: a recursive transcription of the balancing
// rules, which decides on shapes and weights, and std::set, which decides on
// content.

#include "kit/alloc_failure.h"
#include "kit/random.h"
#include "tools/util/tree.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace {

void* slot(int value) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(value));
}
int number(const void* value) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(value));
}

int comparisons = 0;
int counting(const void* stored, const void* probe) {
    ++comparisons;
    return compare_integers(stored, probe);
}

std::vector<int> released;
void release(void* value) {
    released.push_back(number(value));
}

/// The rules with nothing but recursion and full comparisons.
namespace reference {

using Node = generic_tree;

bool needed = false;

int w(const Node* node) {
    return node != nullptr ? node->weight : 0;
}

Node* insert(Node* t, Node* node, bool& added) {
    if (t == nullptr)
        return node;
    Node* left = t->left;
    Node* right = t->right;
    const int order = number(t->value) - number(node->value);
    if (order == 0)
        added = false;
    else if (order < 0)
        t->left = insert(t->left, node, added);
    else
        t->right = insert(t->right, node, added);
    if (added) {
        t->weight += node->weight;
        needed = needed || std::abs(w(left) - w(right)) >= 70;
    }
    return t;
}

Node* inserted(Node* t, Node* node) {
    bool added = true;
    return insert(t, node, added);
}

Node* balance(Node* r) {
    if (w(r) < 3)
        return r;
    const bool leftHeavy = w(r->left) > w(r->right);
    if (std::abs(w(r->left) - w(r->right)) <= 1) {
        r->left = balance(r->left);
        r->right = balance(r->right);
        return r;
    }
    Node* h = std::exchange(leftHeavy ? r->left : r->right, nullptr);
    const bool leansLeft = h->left && (!h->right || w(h->left) > w(h->right));
    r->weight -= h->weight;
    if ((h->left && h->right && w(h->left) == w(h->right)) || leansLeft == leftHeavy)
        return balance(inserted(h, r));
    Node* g = std::exchange(leftHeavy ? h->right : h->left, nullptr);
    h->weight -= g->weight;
    return balance(inserted(inserted(g, r), h));
}

Node* add(Node* root, Node* node, bool& added) {
    added = true;
    needed = false;
    root = insert(root, node, added);
    return added && needed ? balance(root) : root;
}

Node* remove(Node* t, int key, bool& deleted) {
    if (t == nullptr)
        return nullptr;
    if (number(t->value) != key) {
        Node*& child = number(t->value) < key ? t->left : t->right;
        child = remove(child, key, deleted);
        t->weight -= deleted ? 1 : 0;
        return t;
    }
    deleted = true;
    if (!t->left || !t->right) {
        Node* child = t->left ? t->left : t->right;
        std::free(t);
        return child;
    }
    const bool fromLeft = w(t->left) > w(t->right);
    Node*& side = fromLeft ? t->left : t->right;
    Node* end = side;
    while (Node* next = fromLeft ? end->right : end->left)
        end = next;
    t->value = end->value;
    side = remove(side, number(end->value), deleted);
    --t->weight;
    return t;
}

} // namespace reference

bool sameShape(const generic_tree* a, const generic_tree* b) {
    if (a == nullptr || b == nullptr)
        return a == b;
    return a->value == b->value && a->weight == b->weight && sameShape(a->left, b->left) &&
           sameShape(a->right, b->right);
}

/// Values from the `right` end to the `left` one, which is ascending here.
void walk(const generic_tree* root, std::vector<int>& values) {
    if (root == nullptr)
        return;
    walk(root->right, values);
    values.push_back(number(root->value));
    walk(root->left, values);
}

std::vector<int> valuesOf(const generic_tree* root) {
    std::vector<int> values;
    walk(root, values);
    return values;
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

bool add(generic_tree*& root, int value) {
    generic_tree* node = make_tree_node(slot(value));
    bool added = false;
    root = add_tree_node(root, node, counting, added);
    if (!added)
        std::free(node);
    return added;
}

generic_tree* treeOf(const std::vector<int>& values) {
    generic_tree* root = nullptr;
    for (const int value : values)
        add(root, value);
    return root;
}

/// A tree of random shape, the values descending from the left.
generic_tree* randomShape(kit::Random& rng, int size, int& next) {
    if (size == 0)
        return nullptr;
    const int left = rng.oneIn(3) ? (rng.oneIn(2) ? 0 : size - 1) : rng.below(size);
    generic_tree* node = make_tree_node(nullptr);
    node->right = randomShape(rng, size - 1 - left, next);
    node->value = slot(next++);
    node->left = randomShape(rng, left, next);
    node->weight = size;
    return node;
}

/// One node below the other; @p turn tells for each whether the next is left.
template <typename Turn>
generic_tree* chainOf(int size, Turn turn) {
    generic_tree* root = nullptr;
    generic_tree** link = &root;
    for (int i = 0; i < size; ++i) {
        *link = make_tree_node(slot(i));
        (*link)->weight = size - i;
        link = turn(i) ? &(*link)->left : &(*link)->right;
    }
    return root;
}

} // namespace

TEST(Tree, RandomHistoriesKeepShapeWeightAndContentOfTheReferences) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 1500; ++round) {
        generic_tree* tree = nullptr;
        generic_tree* model = nullptr;
        std::set<int> values;
        const int range = rng.between(2, 800);
        const int style = rng.below(3);
        for (int step = rng.below(600), at = 0; step > 0; --step) {
            if (rng.oneIn(4)) {
                const int gone = rng.below(range);
                bool deleted = step % 2 == 0;
                bool expected = false;
                tree = delete_tree_node(tree, slot(gone), counting, nullptr, deleted);
                model = reference::remove(model, gone, expected);
                ASSERT_EQ(values.erase(gone) == 1, deleted);
                continue;
            }
            // Runs of neighbouring values are what makes trees lopsided.
            at = style == 0 ? rng.below(range) : style == 1 ? at + 1 : at + rng.between(-3, 5);
            generic_tree* node = make_tree_node(slot(at));
            bool expected = false;
            model = reference::add(model, node, expected);
            if (!expected)
                std::free(node);
            ASSERT_EQ(expected, add(tree, at));
            ASSERT_EQ(expected, values.insert(at).second);
        }
        ASSERT_TRUE(sameShape(tree, model));
        ASSERT_EQ(std::vector<int>(values.begin(), values.end()), valuesOf(tree));
        ASSERT_EQ(slot(values.empty() ? 0 : *values.begin()), tree_min_value(tree));
        ASSERT_EQ(slot(values.empty() ? 0 : *values.rbegin()), tree_max_value(tree));
        const int probe = rng.below(range);
        ASSERT_EQ(values.count(probe) ? slot(probe) : nullptr,
                  search_tree(tree, slot(probe), counting));
        delete_tree(tree, nullptr);
        delete_tree(model, nullptr);
    }
}

TEST(Tree, RandomShapesAreCopiedBalancedAndJoinedLikeTheReference) {
    kit::Random rng(kit::seed() + 1);
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 3000; ++round) {
        int next = 1;
        generic_tree* tree = randomShape(rng, rng.between(1, 160), next);
        next += 10;
        generic_tree* beyond = randomShape(rng, rng.between(1, 160), next);
        generic_tree* model = copy_tree(tree);
        ASSERT_TRUE(sameShape(tree, model));
        generic_tree* deep =
            copy_tree_deep(tree, [](void* value) { return slot(number(value) + 1000); });
        EXPECT_EQ(slot(number(tree->value) + 1000), std::exchange(deep->value, tree->value));
        ASSERT_TRUE(sameShape(tree, deep));
        comparisons = 0;
        deep = balance_tree(deep, counting);
        EXPECT_EQ(0, comparisons);
        EXPECT_EQ(tree->weight, checkBalanced(deep));
        ASSERT_EQ(valuesOf(tree), valuesOf(deep));
        // A whole subtree counts with its weight.
        bool added = false;
        model = reference::add(model, copy_tree(beyond), added);
        tree = add_tree_node(tree, beyond, counting, added);
        EXPECT_TRUE(added);
        ASSERT_TRUE(sameShape(tree, model)) << round;
        tree = balance_tree(tree, counting);
        model = reference::balance(model);
        ASSERT_TRUE(sameShape(tree, model)) << round;
        for (generic_tree* each : {tree, model, deep})
            delete_tree(each, nullptr);
    }
}

TEST(Tree, ARowOf70IsAChainAndTheNextNodeBalancesIt) {
    for (const int direction : {1, -1}) {
        generic_tree* root = nullptr;
        for (int i = 1; i <= 70; ++i)
            add(root, 1000 + direction * i);
        EXPECT_EQ(slot(1000 + direction), root->value);
        EXPECT_EQ(69, (direction > 0 ? root->left : root->right)->weight);
        add(root, 1000 + direction * 71);
        EXPECT_EQ(71, checkBalanced(root));
        delete_tree(root, nullptr);
    }
}

TEST(Tree, EqualValuesStayOutAndAreReplacedInPlace) {
    char a[] = "key";
    char b[] = "key";
    char other[] = "other";
    bool added = false;
    generic_tree* root = add_tree_node(nullptr, make_tree_node(a), cmp_strings, added);
    EXPECT_TRUE(added);
    generic_tree* node = make_tree_node(b);
    for (generic_tree* refused : {node, static_cast<generic_tree*>(nullptr)}) {
        added = true;
        EXPECT_EQ(root, add_tree_node(root, refused, cmp_strings, added));
        EXPECT_FALSE(added);
    }
    EXPECT_EQ(1, root->weight);
    std::free(node);
    EXPECT_EQ(a, replace_tree_node(root, b, cmp_strings));
    EXPECT_EQ(b, *search_tree2(root, "key", cmp_strings));
    EXPECT_EQ(nullptr, replace_tree_node(root, other, cmp_strings));
    EXPECT_EQ(b, root->value);
    EXPECT_EQ(nullptr, search_tree2(root, "x", cmp_strings));
    delete_tree(root, nullptr);
}

TEST(Tree, DeletionReleasesTheValueAskedForAndNoOther) {
    // Equal weights: the replacement comes from the right, 30 for 40.
    generic_tree* root = treeOf({40, 20, 60, 10, 30, 50, 70});
    comparisons = 0;
    EXPECT_EQ(slot(30), search_tree(root, slot(30), counting));
    EXPECT_EQ(3, comparisons);
    released.clear();
    bool deleted = false;
    root = delete_tree_node(root, slot(40), counting, release, deleted);
    EXPECT_EQ(slot(30), root->value);
    // The left side is heavier now: 50 replaces 30.
    root = delete_tree_node(root, slot(30), counting, release, deleted);
    EXPECT_EQ(slot(50), root->value);
    delete_tree(root, release);
    EXPECT_EQ((std::vector<int>{40, 30, 70, 60, 10, 20, 50}), released);
}

TEST(Tree, AMillionNodesInARowDoNotUseUpTheStack) {
    constexpr int size = 1000000;
    const auto always = [](const void*, const void*) { return -1; };
    generic_tree* chain = chainOf(size, [](int) { return true; });
    generic_tree* copy = copy_tree(chain);
    generic_tree* zigzag = chainOf(size, [](int i) { return i % 2 != 0; });
    bool done = false;
    // Lopsided enough to be balanced at once, after walking to the far end.
    chain = add_tree_node(chain, make_tree_node(slot(size)), always, done);
    EXPECT_EQ(size + 1, checkBalanced(chain));
    copy = delete_tree_node(copy, slot(size - 1), compare_integers, nullptr, done);
    EXPECT_TRUE(done);
    EXPECT_EQ(size - 1, copy->weight);
    zigzag = balance_tree(zigzag, compare_integers);
    EXPECT_EQ(size, checkBalanced(zigzag));
    for (generic_tree* tree : {chain, copy, zigzag, chainOf(size, [](int) { return false; })})
        delete_tree(tree, nullptr);
}

TEST(Tree, NullTreesAreEmptyTrees) {
    bool deleted = true;
    EXPECT_EQ(nullptr, delete_tree_node(nullptr, slot(1), counting, nullptr, deleted));
    EXPECT_FALSE(deleted);
    EXPECT_EQ(nullptr, replace_tree_node(nullptr, slot(1), counting));
    EXPECT_EQ(nullptr, copy_tree_deep(nullptr, nullptr));
    EXPECT_EQ(nullptr, balance_tree(nullptr, nullptr));
    delete_tree(nullptr, release);
}

TEST(Tree, FailedAllocationsLeaveTheTreeAsItWas) {
    // Deep enough that the way down needs memory of its own.
    generic_tree* chain = chainOf(2000, [](int) { return true; });
    generic_tree* before = copy_tree(chain);
    generic_tree* node = make_tree_node(slot(5000));
    bool done = false;
    const auto unchanged = [&] { EXPECT_TRUE(sameShape(chain, before)); };
    const auto remove = [&] {
        chain = delete_tree_node(chain, slot(1999), compare_integers, nullptr, done);
    };
    EXPECT_GT(kit::sweepAllocations(remove, unchanged), 0);
    EXPECT_EQ(1999, chain->weight);
    delete_tree(std::exchange(chain, copy_tree(before)), nullptr);
    const auto insert = [&] { chain = add_tree_node(chain, node, compare_integers, done); };
    EXPECT_GT(kit::sweepAllocations(insert, unchanged), 0);
    EXPECT_EQ(2001, checkBalanced(chain));
    // Copying a bushy tree fails at any node without a leak.
    generic_tree* small = treeOf({50, 30, 70, 20, 40, 60, 80});
    EXPECT_EQ(7, kit::sweepAllocations([&] { delete_tree(copy_tree(small), nullptr); }, [] {}));
    for (generic_tree* tree : {chain, before, small})
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
    const tree_comparator bySlot = compare_integers;
    EXPECT_EQ(-5, bySlot(slot(-2), slot(3)));
}
