// SPDX-License-Identifier: Apache-2.0
/// @file
/// A collection of integers, kept in the pointer slots.
#pragma once

#include "tools/containers/KazColl.h"

/// KazColl of `int` values. Every member does what its namesake there does,
/// with a value in place of an element; there are no element functions.
class KAZ_API KazIntColl : public KazColl {
public:
    /// The value at @p index.
    int getAt(int index) const { return toInt(KazColl::getAt(index)); }
    int operator[](int index) const { return getAt(index); }

    /// Appends @p value and returns its index.
    int add(int value) { return KazColl::add(toItem(value)); }
    /// Replaces the value at @p index.
    void setAt(int index, int value) { KazColl::setAt(index, toItem(value)); }
    /// Inserts @p value in front of @p index; at or beyond the end it is appended, after a gap
    /// of zeros.
    void insertAt(int index, int value) { KazColl::insertAt(index, toItem(value)); }
    /// Inserts the @p count values at @p values.
    void insertAt(int index, const int* values, int count);
    /// The values of @p other: in front of @p index, at the end (returns the index of the
    /// first), or in place of those here.
    void insertAt(int index, const KazIntColl& other) { KazColl::insertAt(index, other); }
    int append(const KazIntColl& other) { return KazColl::append(other); }
    void copy(const KazIntColl& other) { KazColl::copy(other); }

    /// The highest index that holds @p value, or -1. Linear.
    int find(int value) const { return findPtr(toItem(value)); }

private:
    friend class KazIntCollIterator;

    // The values are no pointers, so nothing can be checked in or out.
    using KazColl::setCheckIn;
    using KazColl::setCheckOut;

    static void* toItem(int value) {
        return reinterpret_cast<void*>(static_cast<std::intptr_t>(value));
    }
    static int toInt(const void* item) {
        return static_cast<int>(reinterpret_cast<std::intptr_t>(item));
    }
};
