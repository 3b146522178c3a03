// SPDX-License-Identifier: Apache-2.0
/// @file
/// An ordered set of integers.
#pragma once

#include "tools/containers/KazTree.h"

/// KazTree of `int` values, in ascending order. Members do what their
/// namesakes there do; KazTreeClashException carries the value itself in the
/// place of the pointer. There are no element functions.
class KAZ_API KazIntTree : public KazTree {
public:
    KazIntTree();

    /// Adds @p value. @throws KazTreeClashException when it is there already
    void add(int value) { KazTree::add(toItem(value)); }
    /// Whether @p value is in the tree.
    bool contains(int value) const { return KazTree::contains(toItem(value)); }
    /// Removes @p value; false when it is not there.
    bool remove(int value) { return KazTree::remove(toItem(value)); }

    /// The first and the last value; 0 for an empty tree (see isEmpty).
    int smallest() const { return toInt(KazTree::smallest()); }
    int largest() const { return toInt(KazTree::largest()); }
    /// The value that has @p rank smaller ones; 0 outside 0 to getSize() - 1.
    int valueAt(int rank) const { return toInt(KazTree::valueAt(rank)); }

    /// Replaces the values by those of @p other.
    void copy(const KazIntTree& other) { KazTree::copy(other); }

private:
    friend class KazIntTreeIterator;

    using KazTree::find;
    using KazTree::replace;
    using KazTree::setCheckIn;
    using KazTree::setCheckOut;

    static void* toItem(int value) {
        return reinterpret_cast<void*>(static_cast<std::intptr_t>(value));
    }
    static int toInt(const void* item) {
        return static_cast<int>(reinterpret_cast<std::intptr_t>(item));
    }
};
