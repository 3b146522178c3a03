// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazTree.h"

#include "tools/app/exceptions/KazTreeClashException.h"
#include "tools/containers/KazTreeIterator.h"
#include "tools/containers/detail/held_item.h"
#include "tools/util/detail/heap_ptr.h"
#include "tools/util/tree.h"

#include <utility>

using kaz::detail::HeldItem;

// The comparator sends what comes after a stored value to its left, so the
// walk in order goes from right to left.

namespace {

int weightOf(const generic_tree* node) {
    return node ? node->weight : 0;
}

/// The node with @p rank nodes before it, which there must be.
generic_tree* nodeAt(generic_tree* node, int rank) {
    for (;;) {
        const int before = weightOf(node->right);
        if (rank == before)
            return node;
        if (rank < before) {
            node = node->right;
        } else {
            rank -= before + 1;
            node = node->left;
        }
    }
}

/// A copy of a tree under construction; undone unless it is surrendered.
class Copy {
public:
    Copy(generic_tree* source, KazTree::CheckOut undo) : nodes(copy_tree(source)), checkOut(undo) {}
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    ~Copy() {
        while (nodes && checkOut && made > 0)
            checkOut(nodeAt(nodes, --made)->value);
        delete_tree(nodes, nullptr);
    }

    generic_tree* duplicateValues(KazTree::CheckIn duplicate) {
        for (int count = duplicate ? weightOf(nodes) : 0; made < count; ++made) {
            void*& value = nodeAt(nodes, made)->value;
            value = duplicate(value);
        }
        return std::exchange(nodes, nullptr);
    }

private:
    generic_tree* nodes;
    KazTree::CheckOut checkOut;
    int made = 0;
};

} // namespace

KazTree::KazTree(Compare order) : compare(order) {}

KazTree::KazTree(const KazTree& other) : compare(other.compare) {
    *this = other;
}

KazTree::~KazTree() {
    // More than once, should a check-out add something.
    while (root)
        removeAll();
    for (KazTreeIterator* i = iterators; i; i = i->nextIterator) {
        i->rank = -1;
        i->tree = nullptr;
    }
}

KazTree& KazTree::operator=(const KazTree& other) {
    if (this == &other)
        return *this;
    Copy nodes(other.root, other.checkOutFunction);
    adopt(nodes.duplicateValues(other.checkInFunction), other);
    checkInFunction = other.checkInFunction;
    checkOutFunction = other.checkOutFunction;
    return *this;
}

void KazTree::copy(const KazTree& other, CheckIn duplicate) {
    if (this == &other)
        return;
    Copy nodes(other.root, checkOutFunction);
    adopt(nodes.duplicateValues(duplicate), other);
}

void KazTree::adopt(generic_tree* nodes, const KazTree& other) {
    compare = other.compare;
    generic_tree* old = std::exchange(root, nodes);
    for (KazTreeIterator* i = iterators; i; i = i->nextIterator)
        i->rank = -1;
    delete_tree(old, checkOutFunction);
}

KazTree::CheckIn KazTree::setCheckIn(CheckIn function) {
    return std::exchange(checkInFunction, function);
}

KazTree::CheckOut KazTree::setCheckOut(CheckOut function) {
    return std::exchange(checkOutFunction, function);
}

void KazTree::add(void* value) {
    HeldItem item(checkInFunction, checkOutFunction, value);
    // The comparator may throw: it is asked before anything changes.
    const int rank = iterators ? rankOf(item.get()) : 0;
    kaz::detail::HeapPtr<generic_tree> node(make_tree_node(item.get()));
    bool added = false;
    root = add_tree_node(root, node.get(), compare, added);
    if (!added)
        throw KazTreeClashException(search_tree(root, item.get(), compare));
    node.release();
    item.surrender();
    for (KazTreeIterator* i = iterators; i; i = i->nextIterator) {
        // From its gap an iterator is to find the new value in front of it.
        if (i->rank > rank || (i->rank == rank && !i->inGap))
            ++i->rank;
    }
}

void** KazTree::placeOf(const void* key) const {
    return search_tree2(root, key, compare);
}

void* KazTree::find(const void* key) const {
    return search_tree(root, key, compare);
}

bool KazTree::contains(const void* key) const {
    return placeOf(key) != nullptr;
}

bool KazTree::replace(void* value) {
    if (!contains(value))
        return false;
    HeldItem item(checkInFunction, checkOutFunction, value);
    void** place = placeOf(item.get());
    if (!place)
        return false; // check-in has removed it
    checkedOut(std::exchange(*place, item.surrender()));
    return true;
}

bool KazTree::remove(const void* key) {
    void** place = placeOf(key);
    if (!place)
        return false;
    void* value = *place;
    const int rank = iterators ? rankOf(key) : 0;
    bool deleted = false;
    root = delete_tree_node(root, key, compare, nullptr, deleted);
    for (KazTreeIterator* i = iterators; i; i = i->nextIterator) {
        if (i->rank > rank)
            --i->rank;
        else if (i->rank == rank)
            i->inGap = true;
    }
    checkedOut(value);
    return true;
}

void KazTree::removeAll() {
    adopt(nullptr, *this);
}

void* KazTree::smallest() const {
    return tree_min_value(root);
}

void* KazTree::largest() const {
    return tree_max_value(root);
}

void* KazTree::valueAt(int rank) const {
    return rank >= 0 && rank < getSize() ? nodeAt(root, rank)->value : nullptr;
}

int KazTree::getSize() const {
    return weightOf(root);
}

void KazTree::balance() {
    root = balance_tree(root, compare);
}

/// How many values come before the one equal to @p key.
int KazTree::rankOf(const void* key) const {
    int rank = 0;
    for (const generic_tree* node = root; node;) {
        const int order = compare(node->value, key);
        if (order <= 0)
            rank += weightOf(node->right);
        if (order == 0)
            break;
        rank += order < 0 ? 1 : 0;
        node = order < 0 ? node->left : node->right;
    }
    return rank;
}
