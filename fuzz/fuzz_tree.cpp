// SPDX-License-Identifier: Apache-2.0
// Trees against a recursive transcription of the balancing rules, which decides
// on shapes and weights, and std::set, which decides on content and order.
#include "fuzz/harness.h"
#include "testkit/counted.h"
#include "tools/app/exceptions/KazTreeClashException.h"
#include "tools/containers/KazTree.h"
#include "tools/containers/KazTreeIterator.h"
#include "tools/util/detail/tree_soundness.h"
#include "util/owned.h"

#include <cstdlib>
#include <iterator>
#include <list>
#include <set>
#include <utility>
#include <vector>

namespace {

using fuzz::Input;
using moxkit::Counted;

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

/// Values from the `right` end to the `left` one, which is ascending here; or each behind both
/// of its subtrees.
void walk(const generic_tree* root, std::vector<int>& values, bool upwards = false) {
    if (root == nullptr)
        return;
    walk(upwards ? root->left : root->right, values, upwards);
    if (upwards)
        walk(root->right, values, true);
    values.push_back(number(root->value));
    if (!upwards)
        walk(root->left, values);
}

std::vector<int> valuesOf(const generic_tree* root) {
    std::vector<int> values;
    walk(root, values);
    return values;
}

bool isBalanced(const generic_tree* root) {
    using reference::w;
    return w(root) < 3 || (std::abs(w(root->left) - w(root->right)) <= 1 &&
                           isBalanced(root->left) && isBalanced(root->right));
}

int comparisons = 0;

int counting(const void* stored, const void* probe) {
    ++comparisons;
    return compare_integers(stored, probe);
}

/// What was released, in the order of it.
std::vector<int> released;

void noteReleased(void* value) {
    const fuzz::MemoryHolds holds;
    released.push_back(number(value));
}

/// A tree and its two references under one sequence of changes.
class Trees {
public:
    explicit Trees(Input& input) : failures(input) {}
    Trees(const Trees&) = delete;
    Trees& operator=(const Trees&) = delete;
    ~Trees() {
        std::vector<int> expected;
        walk(model, expected, true);
        released.clear();
        delete_tree(tree, noteReleased);
        FUZZ_CHECK(released == expected);
        delete_tree(model, nullptr);
    }

    int size() const { return static_cast<int>(values.size()); }

    void add(int value) {
        generic_tree* ours = make_tree_node(element(value));
        generic_tree* theirs = make_tree_node(element(value));
        bool added = true, expected = false;
        FUZZ_CHECK(add_tree_node(tree, nullptr, counting, added) == tree && !added);
        failures.step([&] { tree = add_tree_node(tree, ours, counting, added); }, [&] { check(); });
        model = reference::add(model, theirs, expected);
        FUZZ_CHECK(added == expected && added == values.insert(value).second);
        if (!added) {
            std::free(ours);
            std::free(theirs);
        }
    }

    void remove(int value) {
        bool deleted = (value & 1) != 0, expected = false;
        released.clear();
        failures.step(
            [&] { tree = delete_tree_node(tree, element(value), counting, noteReleased, deleted); },
            [&] { check(); });
        model = reference::remove(model, value, expected);
        FUZZ_CHECK(deleted == expected && deleted == (values.erase(value) == 1));
        FUZZ_CHECK(released == std::vector<int>(deleted ? 1 : 0, value));
    }

    void look(int value) {
        void* found = values.count(value) ? element(value) : nullptr;
        FUZZ_CHECK(search_tree(tree, element(value), counting) == found);
        FUZZ_CHECK(replace_tree_node(tree, element(value), counting) == found);
        FUZZ_CHECK(tree_min_value(tree) == element(values.empty() ? 0 : *values.begin()));
        FUZZ_CHECK(tree_max_value(tree) == element(values.empty() ? 0 : *values.rbegin()));
    }

    /// Hangs a copy of the tree, moved beyond its end, into it as one subtree.
    void addWhole() {
        if (tree == nullptr || size() > 2000)
            return;
        const int step = *values.rbegin() - *values.begin() + 1;
        generic_tree* moved[] = {failures.ask([&] { return copy_tree(tree); }), copy_tree(tree)};
        const auto shift = [step](auto& self, generic_tree* node) -> void {
            if (node == nullptr)
                return;
            node->value = element(number(node->value) + step);
            self(self, node->left);
            self(self, node->right);
        };
        for (generic_tree* root : moved)
            shift(shift, root);
        bool added = false;
        tree = add_tree_node(tree, moved[0], counting, added);
        FUZZ_CHECK(added);
        model = reference::add(model, moved[1], added);
        for (const int value : std::vector<int>(values.begin(), values.end()))
            values.insert(value + step);
    }

    void balance() {
        comparisons = 0;
        failures.step([&] { tree = balance_tree(tree, counting); }, [&] { check(); });
        model = reference::balance(model);
        FUZZ_CHECK(comparisons == 0 && isBalanced(tree));
    }

    void copy() {
        const auto next = [](void* value) { return element(number(value) + 1); };
        generic_tree* copied = failures.ask([&] { return copy_tree_deep(tree, next); });
        if (copied != nullptr)
            FUZZ_CHECK(std::exchange(copied->value, tree->value) == next(tree->value));
        FUZZ_CHECK(sameShape(copied, tree));
        delete_tree(std::exchange(tree, copied), nullptr);
    }

    void check() const {
        FUZZ_CHECK(sameShape(tree, model));
        FUZZ_CHECK(kaz::detail::isSound(tree, compare_integers));
        FUZZ_CHECK(valuesOf(tree) == std::vector<int>(values.begin(), values.end()));
    }

private:
    fuzz::Failures failures;
    generic_tree* tree = nullptr;
    generic_tree* model = nullptr;
    std::set<int> values;
};

void functionsFollowTheReference(Input& input) {
    Trees trees(input);
    for (int work = 0, at = 0; !input.empty() && work < 100000; work += trees.size() + 1) {
        const int operation = input.between(0, 9);
        if (operation < 3) {
            trees.add(at = input.between(-300, 300));
        } else if (operation == 3) { // runs of neighbours make trees lopsided
            const int step = input.flag() ? 1 : -3;
            for (int n = input.between(0, 200); n > 0; --n)
                trees.add(at += step);
        } else if (operation < 7) {
            const int first = input.between(-300, 300);
            for (int n = operation == 6 ? input.between(0, 60) : 1; n > 0; --n)
                trees.remove(operation == 6 ? first + n : first);
        } else if (operation == 7) {
            trees.look(input.between(-300, 300));
        } else if (operation == 8) {
            input.between(0, 7) == 0 ? trees.addWhole() : trees.balance();
        } else {
            trees.copy();
        }
        trees.check();
    }
}

// ---- The class, with iterators that stay

int valueOf(const void* element) {
    return element ? static_cast<const Counted*>(element)->value() : -1;
}

/// An iterator and the value that it stands on, which it must keep to.
struct Standing {
    KazTreeIterator iterator;
    int value;

    void check(const std::set<int>& model) const {
        const bool present = model.count(value) > 0;
        FUZZ_CHECK(valueOf(iterator.item()) == (present ? value : -1));
        // From here, or from the gap, both neighbours can be reached.
        KazTreeIterator ahead(iterator), behind(iterator);
        const auto above = model.upper_bound(value);
        const auto here = model.lower_bound(value);
        FUZZ_CHECK(ahead.next() == (above != model.end()));
        FUZZ_CHECK(behind.previous() == (here != model.begin()));
        FUZZ_CHECK(valueOf(ahead.item()) == (above != model.end() ? *above : -1));
        FUZZ_CHECK(valueOf(behind.item()) == (here != model.begin() ? *std::prev(here) : -1));
    }
};

void compareWalks(const KazTree& tree, const std::set<int>& model) {
    KazTreeIterator up(tree);
    for (const int value : model) {
        FUZZ_CHECK(valueOf(up.item()) == value);
        up.next();
    }
    KazTreeIterator down(tree);
    down.toLast();
    for (auto value = model.rbegin(); value != model.rend(); ++value, down.previous())
        FUZZ_CHECK(valueOf(down.item()) == *value);
    FUZZ_CHECK(up.isDone() && down.isDone() && KazTreeIterator(nullptr).isDone());
    for (const int value : {-1, 0, valueOf(tree.valueAt(tree.getSize() / 2)), 7, 1000000}) {
        const auto found = model.lower_bound(value);
        const Counted key(value);
        FUZZ_CHECK(up.startAt(&key) == (found != model.end()));
        FUZZ_CHECK(valueOf(up.item()) == (found != model.end() ? *found : -1));
    }
    FUZZ_CHECK(valueOf(tree.smallest()) == (model.empty() ? -1 : *model.begin()));
    FUZZ_CHECK(valueOf(tree.largest()) == (model.empty() ? -1 : *model.rbegin()));
    FUZZ_CHECK(tree.isEmpty() == model.empty());
}

class Walked {
public:
    Walked(KazTree& walked, fuzz::Failures& source) : tree(walked), failures(source) {}

    void change(Input& input) {
        const Counted element(input.byte());
        const int value = element.value();
        const bool present = model.count(value) > 0;
        void* item = const_cast<Counted*>(&element);
        const int operation = input.between(0, 8);
        if (operation < 3) {
            try {
                failures.step([&] { tree.add(item); }, [&] { check(); });
                FUZZ_CHECK(!present);
            } catch (KazTreeClashException& clash) {
                FUZZ_CHECK(present && clash.getClashData() == tree.find(item));
            }
            model.insert(value);
        } else if (operation < 5) {
            failures.step([&] { FUZZ_CHECK(tree.remove(item) == present); }, [&] { check(); });
            model.erase(value);
        } else if (operation == 5) {
            FUZZ_CHECK(tree.replace(item) == present);
        } else if (operation == 6) {
            stand(input.between(0, 20));
        } else if (operation == 7) {
            compareWalks(tree, model);
        } else if (input.between(0, 20) > 0) {
            tree.balance();
            const KazTree& itself = tree;
            tree = itself;
            failures.step([&] { tree.copy(itself, Counted::checkIn); }, [&] { check(); });
        } else {
            failures.hold([&] { tree.removeAll(); });
            model.clear();
        }
        check();
    }

    const std::set<int>& content() const { return model; }

private:
    void stand(int steps) {
        if (standing.size() == 5)
            standing.pop_front();
        standing.push_back({KazTreeIterator(tree), 0});
        KazTreeIterator& iterator = standing.back().iterator;
        while (steps-- > 0 && iterator.next())
            continue;
        const KazTreeIterator& itself = iterator;
        iterator = itself;
        standing.back().value = valueOf(iterator.item());
    }

    void check() {
        FUZZ_CHECK(tree.getSize() == static_cast<int>(model.size()));
        standing.remove_if([](const Standing& each) { return each.iterator.isDone(); });
        for (const Standing& each : standing)
            each.check(model);
        // A gap does not keep the place of its value when that comes back.
        standing.remove_if([this](const Standing& each) { return !model.count(each.value); });
    }

    KazTree& tree;
    fuzz::Failures& failures;
    std::set<int> model;
    std::list<Standing> standing;
};

void classBehavesLikeASet(Input& input) {
    fuzz::Failures failures(input);
    {
        KazTree tree(Counted::compare);
        tree.setCheckIn(Counted::checkIn);
        tree.setCheckOut(Counted::checkOut);
        Walked walked(tree, failures);
        // As above, work is bounded: each walk visits all elements.
        for (int work = 0; !input.empty() && work < 500000; work += tree.getSize() + 1)
            walked.change(input);
        KazTree copied(Counted::compare);
        copied.setCheckIn(Counted::checkIn);
        copied.setCheckOut(Counted::checkOut);
        const int live = Counted::live();
        failures.step([&] { copied.copy(tree); },
                      [&] { FUZZ_CHECK(copied.isEmpty() && Counted::live() == live); });
        failures.step([&] { copied = tree; }, [&] { compareWalks(copied, walked.content()); });
        KazTree borrowing(Counted::compare);
        failures.step([&] { borrowing.copy(tree, nullptr); },
                      [&] { FUZZ_CHECK(borrowing.isEmpty()); });
        FUZZ_CHECK(borrowing.largest() == tree.largest());
        FUZZ_CHECK(Counted::live() == 2 * tree.getSize());
    }
    FUZZ_CHECK(Counted::live() == 0);
}

} // namespace

void fuzz::harness(Input& input) {
    if (input.flag())
        functionsFollowTheReference(input);
    else
        classBehavesLikeASet(input);
}
