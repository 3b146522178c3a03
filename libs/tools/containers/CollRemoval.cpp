// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazCollIterator.h"
#include "tools/containers/detail/CollParts.h"
#include "tools/containers/detail/held_item.h"

#include <algorithm>

// Elements that leave stay where they are until all of them are checked out, and read as
// null from then on. Only then the slots close up, because an element function may insert
// and remove meanwhile: a Removal follows the places, and what such a function has put into
// one of them stays. What replaces an element comes after that has gone.

using kaz::detail::HeldItem;
using kaz::detail::isUnobserved;
using kaz::detail::Passage;
using kaz::detail::Removal;

/// False for a slot that a removal through another object has vacated.
bool KazColl::holdsElement(int index) const {
    return storage().occupied < 0 || index < storage().occupied;
}

/// What was in the slot, which is null from then on.
void* KazColl::take(int index) {
    void* item = slot(index);
    slot(index) = nullptr;
    return item;
}

void KazColl::setAt(int index, void* item) {
    const bool isNested = isBusy();
    Under<Removal> place(*this, index, index + 1, Removal::up);
    if (holdsElement(index))
        checkOutAt(index, isNested);
    HeldItem held(checkInFunction_, checkOutFunction_, item);
    index = place.begin;
    if (place.isEmpty() || index >= size) // an element function has removed the place
        return checkedOut(held.surrender());
    void* met = take(index);
    slot(index) = held.surrender();
    // A slot that a removal elsewhere has vacated holds an element again.
    storage().occupied = std::max(storage().occupied, storage().occupied < 0 ? -1 : index + 1);
    if (met != nullptr)
        checkedOut(met); // an element function has put it there
}

void KazColl::removeAt(int index, int count) {
    claimSlots();
    count = std::min(count, size - index);
    if (count <= 0)
        return;
    if (isUnobserved(checkOutFunction_)) {
        // Nobody can look meanwhile, so there are no places to follow.
        for (int i = index; checkOutFunction_ != nullptr && i < index + count; ++i)
            KazString::checkOut(take(i));
        return extract(index, count);
    }
    const bool isNested = isBusy();
    Under<Removal> going(*this, index, index + count, Removal::up);
    // The end moves, too: an element function may insert between those that go.
    // A sharer may have moved the slots beyond this object's size.
    while (going.next < std::min(going.end, size))
        checkOutAt(going.next++, isNested);
    removeVacated(going);
}

/// Before the slots are rearranged: what only others count has no place in the
/// new arrangement and goes.
void KazColl::claimSlots() {
    while (data != nullptr && storage().occupied > size)
        checkOutAt(--storage().occupied, false);
}

/// In all that share the slots.
void KazColl::withdrawIterators(int index, int count) {
    forEachSharer([=](KazColl& sharer) {
        for (Passage* each = sharer.passages_; each != nullptr; each = each->outer)
            each->removed(index, count);
        for (KazCollIterator* i = sharer.iterators_; i != nullptr; i = i->nextIterator_) {
            if (i->index_ >= index)
                i->index_ = std::max(i->index_ - count, index - 1);
        }
    });
}

/// Takes slots out, which hold nothing that must be checked out.
void KazColl::extract(int index, int count) {
    const int oldSize = size;
    KazArrayPtr::removeAt(index, count);
    if (!isAlone())
        std::fill(data + size, data + oldSize, nullptr);
    noteSlots();
    withdrawIterators(index, count);
}

/// All of them, mostly at once.
void KazColl::removeVacated(const Removal& going) {
    for (;;) {
        claimSlots();
        const int end = std::min(going.end, size);
        int first = going.begin;
        while (first < end && slot(first) != nullptr)
            ++first;
        int behind = first;
        while (behind < end && slot(behind) == nullptr)
            ++behind;
        if (first >= behind)
            return;
        extract(first, behind - first);
    }
}

void KazColl::removeAll() {
    letGo();
    for (KazCollIterator* i = iterators_; i != nullptr; i = i->nextIterator_)
        i->index_ = KazCollIterator::done;
}

/// Checks out from the last to the first, unless others have the elements, and gives
/// the storage back.
void KazColl::letGo() {
    if (isUnobserved(checkOutFunction_) && passages_ == nullptr)
        return dismiss(depart());
    if (data != nullptr && isAlone()) {
        claimSlots();
        const bool isNested = isBusy();
        Under<Removal> going(*this, 0, size, Removal::down);
        while ((going.next = std::min(going.next, size)) > going.begin)
            checkOutAt(--going.next, isNested);
        removeVacated(going);
    }
    if (size == 0 || !isAlone()) // otherwise an element function has added some
        dismiss(depart());
}

/// Whether an element function of this object or a sharer is being called.
bool KazColl::isBusy() const {
    bool busy = false;
    forEachSharer([&busy](const KazColl& sharer) { busy = busy || sharer.passages_ != nullptr; });
    return busy;
}

/// What is in the slot as an element; null for an item that has not come in yet, which
/// somebody else may let go of.
void* KazColl::checkedInAt(int index) const {
    bool isOutside = false;
    forEachSharer([&](const KazColl& sharer) {
        for (const Passage* each = sharer.passages_; each != nullptr; each = each->outer)
            isOutside = isOutside || each->knows(index);
    });
    return isOutside ? nullptr : slot(index);
}

/// Checks out what is in the slot, which is null from then on. When nested, null is
/// what is on its way out already.
void KazColl::checkOutAt(int index, bool isNested) {
    bool isOutside = false;
    forEachSharer([&](KazColl& sharer) {
        for (Passage* each = sharer.passages_; each != nullptr; each = each->outer) {
            each->elementLeaves();
            isOutside = isOutside || each->yields(index);
        }
    });
    void* item = take(index);
    if (!isOutside && (item != nullptr || !isNested))
        checkedOut(item);
}
