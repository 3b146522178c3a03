// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazCollIterator.h"
#include "tools/containers/detail/CollParts.h"

#include <algorithm>
#include <memory>

// Objects that share storage may differ in size. They stand in a ring, and the storage
// counts them. It also counts the slots that hold elements (`occupied`; -1 while there is
// one owner, whose size says it), so that each element is checked out once, whoever comes
// last: by the object that leaves the ring alone, or by the one that rearranges the slots.

using kaz::detail::Passage;

void KazColl::joinSharersOf(const KazColl& other) {
    Storage& shared = other.storage();
    ++shared.owners;
    if (shared.occupied < 0)
        shared.occupied = other.size;
    data = other.data;
    capacity = other.capacity;
    nextSharer_ = other.nextSharer_;
    other.nextSharer_ = this;
}

void KazColl::leaveSharers() {
    KazColl* before = nextSharer_;
    while (before->nextSharer_ != this)
        before = before->nextSharer_;
    before->nextSharer_ = nextSharer_;
    nextSharer_ = this;
}

/// Empties this object. What it held is the caller's to dismiss; its elements
/// only when nobody else has them.
/// Whatever is under way in this object loses its slots first, as those may be gone when it goes
/// on.
KazColl::Departing KazColl::depart() {
    Departing contents{data, 0, checkOutFunction_, isBusy()};
    for (Passage* each = passages_; each != nullptr; each = each->outer)
        each->abandoned();
    if (data != nullptr && isAlone())
        contents.count = storage().occupied >= 0 ? storage().occupied : size;
    leaveSharers();
    data = nullptr;
    size = 0;
    capacity = 0;
    return contents;
}

/// From the last to the first. Where something is under way, null is an element that is being
/// checked out already, and not one to check out again.
void KazColl::dismiss(const Departing& contents) {
    const auto* slots = reinterpret_cast<const Slot*>(contents.slots);
    if (slots == nullptr)
        return;
    for (int i = contents.checkOut != nullptr ? contents.count - 1 : -1; i >= 0; --i) {
        if (slots[i] != nullptr || !contents.hasGaps)
            contents.checkOut(slots[i]);
    }
    release(contents.slots);
}

/// Common slots grow in one of two ways. Where elements are checked out but never in, nobody can
/// take a second reference to one: all sharers move to the new slots together. Otherwise this
/// object takes references of its own and leaves the old slots to the others.
void KazColl::makeRoom(std::int64_t count) {
    if (count <= capacity)
        return;
    const int newCapacity = capacityFor(count);
    if (isAlone())
        KazArrayPtr::inflate(static_cast<int>(count));
    else if (checkOutFunction_ != nullptr && checkInFunction_ == nullptr)
        moveTogether(newCapacity);
    else
        separate(newCapacity);
}

void KazColl::separate(int newCapacity) {
    // What has not come in yet when somebody else's growth meets it stays outside.
    forEachSharer([](KazColl& sharer) {
        for (Passage* each = sharer.passages_; each != nullptr; each = each->outer)
            for (int i = 0; i < sharer.size; ++i)
                if (each->yields(i))
                    sharer.take(i);
    });
    const auto drop = [](void** slots) { release(slots); };
    std::unique_ptr<void*, decltype(drop)> fresh(allocateSlots(newCapacity), drop);
    Incoming own(*this, size);
    own.checkIn(checkInFunction_, *this);
    if (isAlone() || own.size() != size)
        return makeRoom(newCapacity); // a check-in has changed what there is to separate
    const int kept = size;
    moveSlots(fresh.get(), own.surrender(), kept);
    // The elements in the old slots stay the others': only the share in the block is given back.
    release(depart().slots);
    size = kept;
    data = fresh.release();
    capacity = newCapacity;
}

void KazColl::moveTogether(int newCapacity) {
    int used = storage().occupied;
    forEachSharer([&](const KazColl& sharer) { used = std::max(used, sharer.size); });
    void** slots = allocateSlots(newCapacity);
    moveSlots(slots, data, used);
    storageOf(slots) = {0, storage().occupied};
    forEachSharer([&](KazColl& sharer) {
        ++storageOf(slots).owners;
        release(sharer.data);
        sharer.data = slots;
        sharer.capacity = newCapacity;
    });
}

void KazColl::freeExtra() {
    if (!isAlone())
        return;
    claimSlots();
    noteSlots();
    KazArrayPtr::freeExtra();
}
