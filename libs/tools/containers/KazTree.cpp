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
    return node != nullptr ? node->weight : 0;
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
    Copy(generic_tree* source, KazTree::CheckOut undo)
        : nodes_(copy_tree(source)), checkOut_(undo) {}
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    ~Copy() {
        while (nodes_ != nullptr && checkOut_ != nullptr && made_ > 0)
            checkOut_(nodeAt(nodes_, --made_)->value);
        delete_tree(nodes_, nullptr);
    }

    generic_tree* duplicateValues(KazTree::CheckIn duplicate) {
        for (int count = duplicate != nullptr ? weightOf(nodes_) : 0; made_ < count; ++made_) {
            void*& value = nodeAt(nodes_, made_)->value;
            value = duplicate(value);
        }
        return std::exchange(nodes_, nullptr);
    }

private:
    generic_tree* nodes_;
    KazTree::CheckOut checkOut_;
    int made_ = 0;
};

} // namespace

KazTree::KazTree(Compare order) : compare_(order) {}

KazTree::KazTree(const KazTree& other) : compare_(other.compare_) {
    *this = other;
}

KazTree::~KazTree() {
    // More than once, should a check-out add something.
    while (root_ != nullptr)
        removeAll();
    for (KazTreeIterator* i = iterators_; i != nullptr; i = i->nextIterator_) {
        i->rank_ = -1;
        i->tree_ = nullptr;
    }
}

KazTree& KazTree::operator=(const KazTree& other) {
    if (this == &other)
        return *this;
    Copy nodes(other.root_, other.checkOutFunction_);
    adopt(nodes.duplicateValues(other.checkInFunction_), other);
    checkInFunction_ = other.checkInFunction_;
    checkOutFunction_ = other.checkOutFunction_;
    return *this;
}

void KazTree::copy(const KazTree& other, CheckIn duplicate) {
    if (this == &other)
        return;
    Copy nodes(other.root_, checkOutFunction_);
    adopt(nodes.duplicateValues(duplicate), other);
}

void KazTree::adopt(generic_tree* nodes, const KazTree& other) {
    compare_ = other.compare_;
    generic_tree* old = std::exchange(root_, nodes);
    for (KazTreeIterator* i = iterators_; i != nullptr; i = i->nextIterator_)
        i->rank_ = -1;
    delete_tree(old, checkOutFunction_);
}

KazTree::CheckIn KazTree::setCheckIn(CheckIn function) {
    return std::exchange(checkInFunction_, function);
}

KazTree::CheckOut KazTree::setCheckOut(CheckOut function) {
    return std::exchange(checkOutFunction_, function);
}

void KazTree::add(void* value) {
    HeldItem item(checkInFunction_, checkOutFunction_, value);
    // The comparator may throw: it is asked before anything changes.
    const int rank = iterators_ != nullptr ? rankOf(item.get()) : 0;
    kaz::detail::HeapPtr<generic_tree> node(make_tree_node(item.get()));
    bool added = false;
    root_ = add_tree_node(root_, node.get(), compare_, added);
    if (!added)
        throw KazTreeClashException(search_tree(root_, item.get(), compare_));
    node.release();
    item.surrender();
    for (KazTreeIterator* i = iterators_; i != nullptr; i = i->nextIterator_) {
        // From its gap an iterator is to find the new value in front of it.
        if (i->rank_ > rank || (i->rank_ == rank && !i->inGap_))
            ++i->rank_;
    }
}

void** KazTree::placeOf(const void* key) const {
    return search_tree2(root_, key, compare_);
}

void* KazTree::find(const void* key) const {
    return search_tree(root_, key, compare_);
}

bool KazTree::contains(const void* key) const {
    return placeOf(key) != nullptr;
}

bool KazTree::replace(void* value) {
    if (!contains(value))
        return false;
    HeldItem item(checkInFunction_, checkOutFunction_, value);
    void** place = placeOf(item.get());
    if (place == nullptr)
        return false; // check-in has removed it
    checkedOut(std::exchange(*place, item.surrender()));
    return true;
}

bool KazTree::remove(const void* key) {
    void** place = placeOf(key);
    if (place == nullptr)
        return false;
    void* value = *place;
    const int rank = iterators_ != nullptr ? rankOf(key) : 0;
    bool deleted = false;
    root_ = delete_tree_node(root_, key, compare_, nullptr, deleted);
    for (KazTreeIterator* i = iterators_; i != nullptr; i = i->nextIterator_) {
        if (i->rank_ > rank)
            --i->rank_;
        else if (i->rank_ == rank)
            i->inGap_ = true;
    }
    checkedOut(value);
    return true;
}

void KazTree::removeAll() {
    adopt(nullptr, *this);
}

void* KazTree::smallest() const {
    return tree_min_value(root_);
}

void* KazTree::largest() const {
    return tree_max_value(root_);
}

void* KazTree::valueAt(int rank) const {
    return rank >= 0 && rank < getSize() ? nodeAt(root_, rank)->value : nullptr;
}

int KazTree::getSize() const {
    return weightOf(root_);
}

void KazTree::balance() {
    root_ = balance_tree(root_, compare_);
}

/// How many values come before the one equal to @p key.
int KazTree::rankOf(const void* key) const {
    int rank = 0;
    for (const generic_tree* node = root_; node != nullptr;) {
        const int order = compare_(node->value, key);
        if (order <= 0)
            rank += weightOf(node->right);
        if (order == 0)
            break;
        rank += order < 0 ? 1 : 0;
        node = order < 0 ? node->left : node->right;
    }
    return rank;
}
