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

    void add(int value) { KazTree::add(toItem(value)); }
    bool contains(int value) const { return KazTree::contains(toItem(value)); }
    bool remove(int value) { return KazTree::remove(toItem(value)); }

    /// The first and the last value; 0 for an empty tree (see isEmpty).
    int smallest() const { return toInt(KazTree::smallest()); }
    int largest() const { return toInt(KazTree::largest()); }
    int valueAt(int rank) const { return toInt(KazTree::valueAt(rank)); }

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
