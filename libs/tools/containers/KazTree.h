// SPDX-License-Identifier: Apache-2.0
/// @file
/// An ordered set of untyped values.
#pragma once

#include "tools/export.h"

#include <cstdint>

struct generic_tree;
class KazTreeIterator;

/// Values kept in order, each at most once; a thin object around the balanced
/// tree of tools/util/tree.h.
///
///     KazTree tree(compareItems);
///     tree.add(&item);
///     for (KazTreeIterator i(tree); !i.isDone(); i.next())
///         use(i.item());
///
/// Optional element functions express ownership as they do for KazColl:
/// check-in is called on what enters, and its result is stored; check-out is
/// called on what leaves. They may use the tree: what leaves is out of it
/// before it is checked out, what enters is in it only after check-in has
/// returned. Check-out must not throw.
///
/// Adding, finding and removing take time proportional to the depth, which
/// rebalancing on insertion keeps logarithmic but for a small constant. When
/// memory runs out (KazMemoryException) or check-in throws, the tree is
/// unchanged.
///
/// No locks, and insertions into any two trees must not run at the same time.
class KAZ_API KazTree {
public:
    /// Order of two values: negative when @p stored comes before @p probe,
    /// zero when they count as equal, positive when it comes after.
    using Compare = int (*)(const void* stored, const void* probe);
    using CheckIn = void* (*)(void*); ///< called on what enters; what it returns is stored
    using CheckOut = void (*)(void*); ///< called on what leaves; must not throw

    /// An empty tree without element functions.
    explicit KazTree(Compare compare);
    /// A duplicate: the order and the element functions of @p other, and its
    /// values, each checked in.
    KazTree(const KazTree& other);
    /// Checks every value out. Iterators are done and may outlive the tree.
    ~KazTree();

    /// Replaces order, element functions and values by @p other's, each value
    /// checked in; then checks out what was there. Unchanged when that fails.
    KazTree& operator=(const KazTree& other);

    /// Installs @p function, null for none, for values to come. Returns the
    /// one that was in force.
    CheckIn setCheckIn(CheckIn function);
    CheckOut setCheckOut(CheckOut function);

    /// Checks @p value in and adds it. When an equal value is there already,
    /// checks out again what was checked in (without a check-in function the
    /// value is still the caller's) and throws KazTreeClashException with the
    /// value that is there.
    void add(void* value);

    /// The stored value equal to @p key, or null.
    void* find(const void* key) const;
    /// Whether there is a value equal to @p key; tells a stored null apart.
    bool contains(const void* key) const;

    /// Puts @p value, checked in, in the place of the stored value equal to
    /// it, which is checked out. False, and nothing happens, when there is
    /// none.
    bool replace(void* value);

    /// Removes the value equal to @p key and checks it out; false when there
    /// is none.
    bool remove(const void* key);

    /// Removes every value and checks it out, in no particular order.
    void removeAll();

    /// The first and the last value in the order; null for an empty tree.
    void* smallest() const;
    void* largest() const;

    /// The value that has @p rank values before it; null outside 0 to
    /// getSize() - 1.
    void* valueAt(int rank) const;

    /// The number of values.
    int getSize() const;
    /// Whether there are none.
    bool isEmpty() const { return root_ == nullptr; }

    /// Evens the tree out, so that the sizes of the two sides of any node
    /// differ by one at most.
    void balance();

    /// Replaces the values by those of @p other, whose order the tree takes
    /// over. Each is passed through @p duplicate (null stores the same
    /// pointers) instead of check-in. What was there is then checked out.
    /// Unchanged when @p duplicate throws: what it made is checked out.
    void copy(const KazTree& other, CheckIn duplicate);
    /// The same with this tree's check-in function.
    void copy(const KazTree& other) { copy(other, checkInFunction_); }

private:
    friend class KazTreeIterator;

    void checkedOut(void* value) const {
        if (checkOutFunction_ != nullptr)
            checkOutFunction_(value);
    }
    void** placeOf(const void* key) const;
    int rankOf(const void* key) const;
    void adopt(generic_tree* nodes, const KazTree& other);

    generic_tree* root_ = nullptr;
    Compare compare_;
    CheckOut checkOutFunction_ = nullptr;
    CheckIn checkInFunction_ = nullptr;
    /// Of a const tree, too: walking it changes nothing that it holds.
    mutable KazTreeIterator* iterators_ = nullptr;
};
