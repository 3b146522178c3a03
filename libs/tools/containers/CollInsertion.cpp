// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/detail/CollParts.h"
#include "tools/util/detail/heap_ptr.h"
#include "tools/util/detail/within.h"

#include <algorithm>

// Several items come in one of two ways. Into slots that are nobody else's they go at once,
// and are checked in where they stand: an Arrival knows those that are no elements yet.
// Common slots are to hold nothing but elements, so there the items are checked in aside
// first. Either way, when a check-in throws, what was checked in is checked out again and
// the slots are as before.

using kaz::detail::Arrival;
using kaz::detail::Removal;
using kaz::detail::SourceWatch;

/// Returns where the first one came to stand.
int KazColl::insertAll(int index, void* const* items, int count, const KazColl* source) {
    if (isAlone())
        claimSlots(); // now, as that may change the source
    if (!isAlone())
        return insertAside(index, items, count, source);
    if (source != nullptr) {
        items = source->data;
        count = source->size;
    }
    kaz::detail::HeapPtr<void*> aside;
    const auto slots = static_cast<std::size_t>(capacity);
    if (kaz::detail::isWithin<void*>(items, data, slots) ||
        (source != nullptr && source->isBusy())) {
        // Own slots move; in others there may be what is no element yet.
        aside.reset(static_cast<void**>(
            kaz::detail::allocate(static_cast<std::size_t>(count) * sizeof(void*))));
        moveSlots(aside.get(), items, count);
        for (int i = 0; source != nullptr && i < count; ++i)
            aside.get()[i] = source->checkedInAt(i);
        items = aside.get();
    }
    insertInPlace(index, items, count, source);
    return index;
}

/// The slots are others' too, who are to meet elements only.
int KazColl::insertAside(int index, void* const* items, int count, const KazColl* source) {
    const bool isAtEnd = index == size;
    Incoming incoming(*this, count);
    if (source != nullptr)
        incoming.checkIn(checkInFunction_, *source);
    else
        incoming.checkIn(checkInFunction_, items);
    const int arrived = incoming.size();
    prepare(isAtEnd ? 0 : index, arrived);
    const int first = isAtEnd ? size : index;
    void** slots = openSlots(first, arrived);
    moveSlots(slots, incoming.surrender(), arrived);
    return first;
}

/// The slots are this object's alone, and the items elsewhere.
void KazColl::insertInPlace(int index, void* const* items, int count, const KazColl* source) {
    if (checkInFunction_ == nullptr || checkInFunction_ == KazString::checkIn) {
        // Nobody can look meanwhile.
        void** slots = openSlots(index, count);
        moveSlots(slots, items, count);
        if (checkInFunction_ != nullptr)
            std::for_each_n(slots, count, KazString::checkIn);
        return;
    }
    Under<Arrival> arrival(*this, count);
    const Under<SourceWatch> watch(source != nullptr ? *source : *this);
    const int oldSize = size;
    moveSlots(openSlots(index, count), items, count);
    const Under<Removal> gap(*this, oldSize, std::max(index, oldSize), Removal::up);
    arrival.begin(index, data);
    try {
        checkInPlaced(arrival, watch);
        removeItems(arrival, arrival.arrived());
    } catch (...) {
        for (int number = arrival.arrived() - 1; number >= 0; --number) {
            if (arrival.placeOf(number) >= 0)
                checkOutAt(arrival.placeOf(number), false);
        }
        removeItems(arrival, 0);
        removeVacated(gap);
        throw;
    }
}

void KazColl::checkInPlaced(Arrival& arrival, const SourceWatch& watch) {
    const CheckIn function = checkInFunction_;
    for (; arrival.arrived() < arrival.size() && watch.isComplete(); arrival.advance()) {
        const int number = arrival.arrived();
        if (arrival.placeOf(number) < 0)
            continue;
        void* item = function(slot(arrival.placeOf(number)));
        if (arrival.placeOf(number) >= 0)
            slot(arrival.placeOf(number)) = item;
        else
            checkedOut(item); // its place is gone
    }
}

/// Takes those out, from that number on, that are not checked in, or no longer.
void KazColl::removeItems(const Arrival& arrival, int from) {
    for (int number = arrival.arrived(); number < arrival.size(); ++number) {
        if (arrival.placeOf(number) >= 0)
            take(arrival.placeOf(number));
    }
    for (int number = arrival.size() - 1; number >= from; --number) {
        claimSlots();
        const int last = arrival.placeOf(number);
        if (last < 0 || slot(last) != nullptr)
            continue;
        int first = last;
        while (number > from && arrival.placeOf(number - 1) == first - 1 &&
               slot(first - 1) == nullptr) {
            --number;
            --first;
        }
        extract(first, last - first + 1);
    }
}
