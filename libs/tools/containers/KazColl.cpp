// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazColl.h"

#include "tools/containers/KazCollIterator.h"
#include "tools/containers/detail/CollParts.h"
#include "tools/containers/detail/held_item.h"

#include <algorithm>
#include <utility>

// Element functions see elements come and go in their slots, and may do anything to
// the collection that calls them. So each member that calls several of them has its
// slots followed meanwhile (Passage), by this object and by those that share them.
// Every slot below the size holds either an element, which is checked out once, or
// null, or an item that an Arrival knows as not checked in yet.

using kaz::detail::HeldItem;
using kaz::detail::Passage;

KazColl::KazColl(const KazColl& other) : KazArrayPtr() {
    *this = other;
}

KazColl::~KazColl() {
    // More than once, should a check-out add something.
    while (data != nullptr)
        letGo();
    for (KazCollIterator* i = iterators_; i != nullptr; i = i->nextIterator_) {
        i->index_ = KazCollIterator::done;
        i->collection_ = nullptr;
    }
}

KazColl& KazColl::operator=(const KazColl& other) {
    if (this == &other)
        return *this;
    // What this object had is checked out last: an element function then finds the copy complete.
    const Departing old = data != nullptr && data == other.data ? Departing{} : depart();
    if (data != other.data)
        joinSharersOf(other);
    size = other.size;
    growthRate = other.growthRate;
    checkOutFunction_ = other.checkOutFunction_;
    checkInFunction_ = other.checkInFunction_;
    for (KazCollIterator* i = iterators_; i != nullptr; i = i->nextIterator_) {
        if (i->index_ >= size)
            i->index_ = KazCollIterator::done;
    }
    dismiss(old);
    return *this;
}

KazColl::CheckIn KazColl::setCheckIn(CheckIn function) {
    return std::exchange(checkInFunction_, function);
}

KazColl::CheckOut KazColl::setCheckOut(CheckOut function) {
    return std::exchange(checkOutFunction_, function);
}

void KazColl::inflate(int count) {
    makeRoom(count);
}

/// Readies the slots for an insertion that cannot fail. Repeats what the
/// element functions called meanwhile have undone.
void KazColl::prepare(int index, int count) {
    const auto needed = [&] { return std::int64_t{std::max(index, size)} + count; };
    do {
        makeRoom(needed());
        claimSlots();
    } while (needed() > capacity);
}

/// An iterator at the end has nothing behind it that would move, so only an insertion inside is
/// told to the iterators.
void** KazColl::openSlots(int index, int count) {
    prepare(index, count);
    const bool isInside = index < size;
    openGap(index, count);
    noteSlots();
    if (isInside)
        advanceIterators(index, count);
    return data + index;
}

int KazColl::addOne(void* item) {
    HeldItem held(checkInFunction_, checkOutFunction_, item);
    // Room in slots that are nobody else's: the usual case, in half the time.
    if (size < capacity && storage().occupied < 0) {
        slot(size) = held.surrender();
        return size++;
    }
    prepare(0, 1);
    openGap(size, 1);
    slot(size - 1) = held.surrender();
    noteSlots();
    return size - 1;
}

void KazColl::insertAt(int index, void* item) {
    HeldItem held(checkInFunction_, checkOutFunction_, item);
    openSlots(index, 1);
    slot(index) = held.surrender();
}

void KazColl::insertAt(int index, void** items, int count) {
    insertAll(index, items, count, nullptr);
}

void KazColl::insertAt(int index, const KazColl& other) {
    if (other.size > 0)
        insertAll(index, other.data, other.size, &other);
}

int KazColl::append(const KazColl& other) {
    return other.size > 0 ? insertAll(size, other.data, other.size, &other) : size;
}

void KazColl::copy(const KazColl& other) {
    if (this == &other)
        return;
    // The memory first, while nothing is lost yet.
    KazColl room;
    room.inflate(other.size);
    removeAll();
    if (data == nullptr) {
        std::swap(data, room.data);
        std::swap(capacity, room.capacity);
    }
    append(other);
}

/// After the slots were rearranged.
void KazColl::noteSlots() {
    if (data != nullptr && storage().occupied >= 0)
        storage().occupied = isAlone() ? -1 : size;
}

/// Here and in all that share the slots.
void KazColl::advanceIterators(int index, int count) {
    forEachSharer([=](KazColl& sharer) {
        for (Passage* each = sharer.passages_; each != nullptr; each = each->outer)
            each->inserted(index, count);
        for (KazCollIterator* i = sharer.iterators_; i != nullptr; i = i->nextIterator_) {
            if (i->index_ >= index)
                i->index_ += count;
        }
    });
}
