// SPDX-License-Identifier: Apache-2.0
/// @file
/// A growable array of untyped pointers.
#pragma once

#include "tools/export.h"

#include <cstdint>

namespace kaz::detail {

/// A slot as the library itself reads and writes it: the same bytes may be in
/// use as another one-pointer type at the same time (see KazStringColl).
typedef void* Slot __attribute__((__may_alias__));

} // namespace kaz::detail

/// A growable array of `void*`. It owns its slot storage and nothing that the
/// slots point to.
///
///     KazArrayPtr array;
///     array.add(&first);
///     array.insertAt(0, &second);
///     void* last = array[array.getSize() - 1];
///
/// Indexes and counts are not checked: unless a member says otherwise an index
/// lies in 0 to getSize() - 1 and a count is not negative. A reference or
/// pointer to a slot is good until the next member that adds slots or gives
/// storage back.
///
/// Growth is the only thing that can fail. It throws KazMemoryException and
/// leaves the array as it was; so does a size that 32 bits cannot hold.
///
/// Copying and assigning are shallow: both arrays then use the same slots, so
/// that what is written through one is read through the other, until one of
/// them grows beyond the capacity (it then has slots of its own) or lets go
/// (setSize(0), removeAll, assignment, destruction). Each has its own size.
/// The slots are freed by the array that lets go last. copy() duplicates.
///
/// No locks: one thread at a time.
class KAZ_API KazArrayPtr {
public:
    KazArrayPtr() = default;
    /// Shares @p other's storage, as assignment does.
    KazArrayPtr(const KazArrayPtr& other);
    ~KazArrayPtr();

    /// Lets go of the present storage, then shares @p other's (see above).
    KazArrayPtr& operator=(const KazArrayPtr& other);

    /// The number of slots in use.
    int getSize() const { return size; }

    /// The slots, getSize() of them in use; null while nothing is allocated.
    void** getData() { return data; }
    void* const* getData() const { return data; }

    /// The pointer at @p index.
    void* getAt(int index) const { return slot(index); }
    void* operator[](int index) const { return slot(index); }

    /// The slot itself, to be written through; also of a const array.
    void*& elementAt(int index) const { return data[index]; }
    void*& operator[](int index) { return data[index]; }

    /// Stores @p item at @p index.
    void setAt(int index, void* item) { slot(index) = item; }

    /// setAt, after making the array large enough; new slots before @p index
    /// are null.
    void setAtGrow(int index, void* item);

    /// Appends @p item and returns its index.
    int add(void* item) {
        reserve(std::int64_t{size} + 1);
        slot(size) = item;
        return size++;
    }

    /// Drops the last slot, if there is one. Keeps the storage.
    void remove();

    /// Makes getSize() equal @p count. Slots that come into use are null. 0 or
    /// less empties the array and gives the storage back; any other count keeps it.
    void setSize(int count);

    /// Makes room for at least @p count slots, so that the array can grow to
    /// that size without moving. Capacities are multiples of 4 and grow by the
    /// growth rate, so that adding one at a time costs constant time each.
    void inflate(int count) { reserve(count); }

    /// Sets the factor by which the capacity grows, 1.3 at first. A @p rate
    /// that is not above 1.0 (or not a number) means 1.3.
    void setGrowthRate(float rate);

    /// Gives back the slots not in use, all of them when the array is empty.
    /// Nothing changes when the shorter storage cannot be had or when the
    /// storage is shared with another array.
    void freeExtra();

    /// setSize(0).
    void removeAll() { setSize(0); }

    /// Inserts @p item in front of the slot at @p index, as below.
    void insertAt(int index, void* item) { insertAt(index, &item, 1); }

    /// Inserts @p count pointers in front of the slot at @p index. An index at
    /// or beyond the end appends, after null slots that fill the gap. @p items
    /// may be slots of this array.
    void insertAt(int index, void** items, int count);

    /// Inserts the slots of @p other, which may be this array.
    void insertAt(int index, const KazArrayPtr& other);

    /// Removes @p count slots from @p index on. Keeps the storage.
    void removeAt(int index, int count);

    /// Appends the slots of @p other, which may be this array. Returns the
    /// index of the first one appended (the old size).
    int append(const KazArrayPtr& other);

    /// Makes this array's slots a duplicate of @p other's.
    void copy(const KazArrayPtr& other);

    /// The highest index whose slot holds exactly @p item, or -1. Linear.
    int findPtr(void* item) const;

protected:
    using Slot = kaz::detail::Slot; ///< a slot as the library reads it

    /// Stands in memory directly before the first slot.
    struct Storage {
        std::int32_t owners;   ///< objects that use these slots
        std::int32_t occupied; ///< KazColl's: slots that hold elements; -1 for getSize()
    };

    /// The slot at @p index, which is not checked.
    Slot& slot(int index) const { return reinterpret_cast<Slot*>(data)[index]; }
    /// What stands before @p slots (not null).
    static Storage& storageOf(void** slots) { return reinterpret_cast<Storage*>(slots)[-1]; }
    /// What stands before the slots of this array, which has some.
    Storage& storage() const { return storageOf(data); }

    /// The capacity that inflate(count) chooses.
    int capacityFor(std::int64_t count) const;
    /// inflate for a count that may be too large.
    void reserve(std::int64_t count) {
        if (count > capacity)
            enlarge(count);
    }
    /// reserve for a count beyond the capacity.
    void enlarge(std::int64_t count);
    /// Storage for @p count slots, with one owner.
    static void** allocateSlots(int count);
    /// Drops one owner of @p slots (null allowed); the last one frees them.
    static void release(void** slots);
    /// The two ranges may overlap.
    static void moveSlots(void** to, void* const* from, std::int64_t count);
    /// setSize for sizes above the present one.
    void grow(std::int64_t count);
    /// Makes place for @p count slots at @p index, see insertAt.
    void openGap(int index, int count);

    void** data = nullptr;     ///< the first slot; null without storage
    std::int32_t size = 0;     ///< slots in use
    std::int32_t capacity = 0; ///< slots allocated
    float growthRate = 1.3F;   ///< see setGrowthRate()
};
