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
#include <string>
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

/// The rules with nothing but recursion and full comparisons.
namespace reference {

struct Node {
    int value;
    Node* left = nullptr;
    Node* right = nullptr;
    int weight = 1;
    explicit Node(int v) : value(v) {}
};

bool needed = false;

int w(const Node* node) {
    return node != nullptr ? node->weight : 0;
}

Node* insert(Node* t, Node* node, bool& added) {
    if (t == nullptr) {
        added = true;
        return node;
    }
    Node* left = t->left;
    Node* right = t->right;
    const int order = t->value - node->value;
    if (order == 0)
        added = false;
    else if (order < 0)
        t->left = insert(t->left, node, added);
    else
        t->right = insert(t->right, node, added);
    if (added) {
        t->weight += node->weight;
        if (!needed) {
            const int d = w(left) - w(right);
            needed = d >= 70 || d <= -70;
        }
    }
    return t;
}

Node* inserted(Node* t, Node* node) {
    bool added = true;
    return insert(t, node, added);
}

Node* balance(Node* r) {
    if (r == nullptr || r->weight < 3)
        return r;
    const int l = w(r->left);
    const int rw = w(r->right);
    if (std::abs(l - rw) <= 1) {
        r->left = balance(r->left);
        r->right = balance(r->right);
        return r;
    }
    Node*& heavyLink = l > rw ? r->left : r->right;
    Node* h = heavyLink;
    const bool leansLeft = h->left && (!h->right || w(h->left) > w(h->right));
    heavyLink = nullptr;
    r->weight -= h->weight;
    if (h->left && h->right && w(h->left) == w(h->right))
        return balance(inserted(h, r));
    if (leansLeft == (l > rw))
        return balance(inserted(h, r));
    Node*& innerLink = l > rw ? h->right : h->left;
    Node* g = innerLink;
    innerLink = nullptr;
    h->weight -= g->weight;
    return balance(inserted(inserted(g, r), h));
}

Node* add(Node* root, int value, bool& added) {
    auto* node = new Node(value);
    added = true;
    needed = false;
    root = insert(root, node, added);
    if (!added)
        delete node;
    return added && needed ? balance(root) : root;
}

Node* end(Node* t, Node* Node::*side) {
    while (t->*side)
        t = t->*side;
    return t;
}

Node* remove(Node* t, int key, bool& deleted) {
    if (t == nullptr) {
        deleted = false;
        return nullptr;
    }
    if (t->value != key) {
        Node*& child = t->value < key ? t->left : t->right;
        child = remove(child, key, deleted);
        t->weight -= deleted ? 1 : 0;
        return t;
    }
    if (!t->left || !t->right) {
        Node* child = t->left ? t->left : t->right;
        delete t;
        deleted = true;
        return child;
    }
    const bool fromLeft = w(t->left) > w(t->right);
    const int moved =
        fromLeft ? end(t->left, &Node::right)->value : end(t->right, &Node::left)->value;
    Node*& side = fromLeft ? t->left : t->right;
    side = remove(side, moved, deleted);
    t->value = moved;
    t->weight -= deleted ? 1 : 0;
    return t;
}

void destroy(Node* t) {
    if (t == nullptr)
        return;
    destroy(t->left);
    destroy(t->right);
    delete t;
}

} // namespace reference

bool sameShape(const generic_tree* a, const reference::Node* b) {
    if (a == nullptr || b == nullptr)
        return a == nullptr && b == nullptr;
    return number(a->value) == b->value && a->weight == b->weight && sameShape(a->left, b->left) &&
           sameShape(a->right, b->right);
}

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

/// Counts nodes; fails where weights are wrong or, if asked, sizes unbalanced.
int checkWeights(const generic_tree* root, bool balanced) {
    if (root == nullptr)
        return 0;
    const int left = checkWeights(root->left, balanced);
    const int right = checkWeights(root->right, balanced);
    EXPECT_EQ(left + right + 1, root->weight);
    EXPECT_TRUE(!balanced || root->weight < 3 || std::abs(left - right) <= 1);
    return left + right + 1;
}

generic_tree* add(generic_tree* root, int value, bool& added) {
    generic_tree* node = make_tree_node(slot(value));
    root = add_tree_node(root, node, counting, added);
    if (!added)
        std::free(node);
    return root;
}

generic_tree* treeOf(const std::vector<int>& values) {
    generic_tree* root = nullptr;
    bool added = false;
    for (const int value : values)
        root = add(root, value, added);
    return root;
}

/// A tree under test with both references, all fed alike.
class Trio {
public:
    ~Trio() {
        delete_tree(tree, nullptr);
        reference::destroy(model);
    }
    void add(int value) {
        bool added = false;
        bool expected = false;
        tree = ::add(tree, value, added);
        model = reference::add(model, value, expected);
        ASSERT_EQ(expected, added);
        ASSERT_EQ(values.insert(value).second, added);
    }
    void remove(int value) {
        bool deleted = false;
        bool expected = false;
        tree = delete_tree_node(tree, slot(value), counting, nullptr, deleted);
        model = reference::remove(model, value, expected);
        ASSERT_EQ(expected, deleted);
        ASSERT_EQ(values.erase(value) == 1, deleted);
    }
    void check() const {
        ASSERT_TRUE(sameShape(tree, model));
        ASSERT_EQ(std::vector<int>(values.begin(), values.end()), valuesOf(tree));
        ASSERT_EQ(slot(values.empty() ? 0 : *values.begin()), tree_min_value(tree));
        ASSERT_EQ(slot(values.empty() ? 0 : *values.rbegin()), tree_max_value(tree));
    }

    generic_tree* tree = nullptr;
    reference::Node* model = nullptr;
    std::set<int> values;
};

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

reference::Node* mirror(const generic_tree* tree) {
    if (tree == nullptr)
        return nullptr;
    auto* node = new reference::Node(number(tree->value));
    node->left = mirror(tree->left);
    node->right = mirror(tree->right);
    node->weight = tree->weight;
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

std::vector<int> released;
void release(void* value) {
    released.push_back(number(value));
}

} // namespace

TEST(Tree, RandomHistoriesKeepShapeWeightAndContentOfTheReferences) {
    kit::Random rng(kit::seed());
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 1500; ++round) {
        Trio trio;
        const int range = rng.between(2, 800);
        const int style = rng.below(3);
        for (int step = rng.below(600), at = 0; step > 0; --step) {
            // Runs of neighbouring values are what makes trees lopsided.
            at = style == 0 ? rng.below(range) : style == 1 ? at + 1 : at + rng.between(-3, 5);
            rng.oneIn(4) ? trio.remove(rng.below(range)) : trio.add(at);
        }
        ASSERT_NO_FATAL_FAILURE(trio.check());
        const int probe = rng.below(range);
        ASSERT_EQ(trio.values.count(probe) ? slot(probe) : nullptr,
                  search_tree(trio.tree, slot(probe), counting));
    }
}

TEST(Tree, BalancingRandomShapesGivesTheReferenceShape) {
    kit::Random rng(kit::seed() + 1);
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 3000; ++round) {
        int next = 1;
        generic_tree* tree = randomShape(rng, rng.below(200), next);
        reference::Node* model = reference::balance(mirror(tree));
        const std::vector<int> before = valuesOf(tree);
        comparisons = 0;
        tree = balance_tree(tree, counting);
        EXPECT_EQ(0, comparisons);
        ASSERT_TRUE(sameShape(tree, model)) << round;
        checkWeights(tree, true);
        ASSERT_EQ(before, valuesOf(tree));
        delete_tree(tree, nullptr);
        reference::destroy(model);
    }
}

TEST(Tree, SubtreesAreInsertedWithTheirWeight) {
    kit::Random rng(kit::seed() + 2);
    for (int round = 0; round < 200; ++round) {
        int next = 1;
        generic_tree* low = randomShape(rng, rng.between(1, 60), next);
        next += 10;
        generic_tree* high = randomShape(rng, rng.between(1, 160), next);
        bool expected = true;
        reference::needed = false;
        reference::Node* model = reference::insert(mirror(low), mirror(high), expected);
        model = reference::needed ? reference::balance(model) : model;
        bool added = false;
        low = add_tree_node(low, high, compare_integers, added);
        EXPECT_TRUE(added);
        ASSERT_TRUE(sameShape(low, model));
        delete_tree(low, nullptr);
        reference::destroy(model);
    }
}

TEST(Tree, ARowOf70IsAChainAndTheNextNodeBalancesIt) {
    for (const int direction : {1, -1}) {
        generic_tree* root = nullptr;
        bool added = false;
        for (int i = 1; i <= 70; ++i)
            root = add(root, 1000 + direction * i, added);
        EXPECT_EQ(slot(1000 + direction), root->value);
        EXPECT_EQ(69, (direction > 0 ? root->left : root->right)->weight);
        EXPECT_EQ(nullptr, direction > 0 ? root->right : root->left);
        root = add(root, 1000 + direction * 71, added);
        EXPECT_EQ(71, checkWeights(root, true));
        EXPECT_EQ(71U, valuesOf(root).size());
        delete_tree(root, nullptr);
    }
}

TEST(Tree, ADuplicateLeavesTreeAndNodeAlone) {
    generic_tree* root = treeOf({5, 3, 8, 4});
    generic_tree* before = copy_tree(root);
    generic_tree* node = make_tree_node(slot(4));
    bool added = true;
    EXPECT_EQ(root, add_tree_node(root, node, counting, added));
    EXPECT_FALSE(added);
    EXPECT_TRUE(sameShape(root, before));
    EXPECT_EQ(1, node->weight);
    added = true;
    EXPECT_EQ(root, add_tree_node(root, nullptr, counting, added));
    EXPECT_FALSE(added);
    std::free(node);
    delete_tree(before, nullptr);
    delete_tree(root, nullptr);
}

TEST(Tree, InsertionAndSearchAskOnceALevel) {
    generic_tree* root = treeOf({50, 30, 70, 20, 40, 60, 80});
    comparisons = 0;
    EXPECT_EQ(slot(40), search_tree(root, slot(40), counting));
    EXPECT_EQ(3, comparisons);
    bool added = false;
    root = add(root, 45, added);
    EXPECT_EQ(6, comparisons);
    delete_tree(root, nullptr);
}

TEST(Tree, SlotsAreReplacedInPlace) {
    char a[] = "key";
    char b[] = "key";
    bool added = false;
    generic_tree* root = add_tree_node(nullptr, make_tree_node(a), cmp_strings, added);
    EXPECT_EQ(a, replace_tree_node(root, b, cmp_strings));
    EXPECT_EQ(b, *search_tree2(root, "key", cmp_strings));
    char other[] = "other";
    EXPECT_EQ(nullptr, replace_tree_node(root, other, cmp_strings));
    EXPECT_EQ(b, root->value);
    EXPECT_EQ(nullptr, search_tree2(root, "x", cmp_strings));
    delete_tree(root, nullptr);
}

TEST(Tree, DeletionReleasesTheValueAskedForAndNoOther) {
    // Equal weights: the replacement comes from the right, 30 for 40.
    generic_tree* root = treeOf({40, 20, 60, 10, 30, 50, 70});
    released.clear();
    bool deleted = false;
    root = delete_tree_node(root, slot(40), counting, release, deleted);
    EXPECT_TRUE(deleted);
    EXPECT_EQ(slot(30), root->value);
    // The left side is heavier now: 50 replaces 30.
    root = delete_tree_node(root, slot(30), counting, release, deleted);
    EXPECT_EQ(slot(50), root->value);
    root = delete_tree_node(root, slot(99), counting, release, deleted);
    EXPECT_FALSE(deleted);
    EXPECT_EQ((std::vector<int>{40, 30}), released);
    EXPECT_EQ(5, checkWeights(root, false));
    released.clear();
    delete_tree(root, release);
    EXPECT_EQ((std::vector<int>{70, 60, 10, 20, 50}), released);
}

TEST(Tree, CopiesShareValuesAndADeepCopyDuplicatesTheRootOnly) {
    kit::Random rng(kit::seed() + 3);
    for (int round = 0; round < 100; ++round) {
        int next = 1;
        generic_tree* tree = randomShape(rng, rng.between(1, 80), next);
        generic_tree* copy = copy_tree(tree);
        EXPECT_TRUE(sameShape(tree, copy));
        generic_tree* deep =
            copy_tree_deep(tree, [](void* value) { return slot(number(value) + 1000); });
        EXPECT_EQ(slot(number(tree->value) + 1000), deep->value);
        deep->value = tree->value;
        EXPECT_TRUE(sameShape(tree, deep));
        for (generic_tree* t : {tree, copy, deep})
            delete_tree(t, nullptr);
    }
}

TEST(Tree, AMillionNodesInARowDoNotUseUpTheStack) {
    constexpr int size = 1000000;
    const auto always = [](const void*, const void*) { return -1; };
    generic_tree* chain = chainOf(size, [](int) { return true; });
    generic_tree* copy = copy_tree(chain);
    generic_tree* zigzag = chainOf(size, [](int i) { return i % 2 == 0; });
    bool done = false;
    // Lopsided enough to be balanced at once, after walking to the far end.
    chain = add_tree_node(chain, make_tree_node(slot(size)), always, done);
    EXPECT_TRUE(done);
    EXPECT_EQ(size + 1, checkWeights(chain, true));
    copy = delete_tree_node(copy, slot(size - 1), compare_integers, nullptr, done);
    EXPECT_TRUE(done);
    EXPECT_EQ(size - 1, copy->weight);
    copy = balance_tree(copy, compare_integers);
    EXPECT_EQ(size - 1, checkWeights(copy, true));
    delete_tree(zigzag, nullptr);
    zigzag = chainOf(size, [](int i) { return i % 2 != 0; });
    zigzag = balance_tree(zigzag, compare_integers);
    EXPECT_EQ(size, checkWeights(zigzag, true));
    for (generic_tree* tree : {chain, copy, zigzag})
        delete_tree(tree, nullptr);
    delete_tree(chainOf(size, [](int) { return false; }), nullptr);
}

TEST(Tree, NullTreesAreEmptyTrees) {
    bool deleted = true;
    EXPECT_EQ(nullptr, delete_tree_node(nullptr, slot(1), counting, nullptr, deleted));
    EXPECT_FALSE(deleted);
    EXPECT_EQ(nullptr, search_tree(nullptr, slot(1), counting));
    EXPECT_EQ(nullptr, replace_tree_node(nullptr, slot(1), counting));
    EXPECT_EQ(nullptr, tree_min_value(nullptr));
    EXPECT_EQ(nullptr, tree_max_value(nullptr));
    EXPECT_EQ(nullptr, copy_tree(nullptr));
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
    bool copied = false;
    const auto unchanged = [&] { EXPECT_TRUE(sameShape(chain, before)); };
    EXPECT_GT(kit::sweepAllocations(
                  [&] {
                      done = false;
                      chain = delete_tree_node(chain, slot(1999), compare_integers, nullptr, done);
                  },
                  unchanged),
              0);
    EXPECT_TRUE(done);
    generic_tree* restored = copy_tree(before);
    delete_tree(chain, nullptr);
    chain = restored;
    EXPECT_GT(kit::sweepAllocations(
                  [&] { chain = add_tree_node(chain, node, compare_integers, done); }, unchanged),
              0);
    EXPECT_EQ(2001, checkWeights(chain, true));
    // Copying a bushy tree fails at any node without a leak.
    generic_tree* small = treeOf({50, 30, 70, 20, 40, 60, 80});
    EXPECT_EQ(7, kit::sweepAllocations(
                     [&] {
                         delete_tree(copy_tree(small), nullptr);
                         copied = true;
                     },
                     [&] { EXPECT_FALSE(copied); }));
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
    EXPECT_EQ(0, cmp_strings(nullptr, nullptr));
    int low = INT_MIN;
    int one = 1;
    EXPECT_EQ(INT_MAX, cmp_ints(&low, &one));
    EXPECT_EQ(-5, compare_integers(2, 7));
    const tree_comparator bySlot = compare_integers;
    EXPECT_EQ(-5, bySlot(slot(-2), slot(3)));
}
