// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazColl.h"

#include "tools/containers/KazCollIterator.h"
#include "tools/containers/detail/Passages.h"
#include "tools/containers/detail/held_item.h"
#include "tools/strings/KazString.h"
#include "tools/util/detail/allocate.h"
#include "tools/util/detail/heap_ptr.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>

// Element functions see elements come and go in their slots, and may do anything to
// the collection that calls them. So each member that calls several of them has its
// slots followed meanwhile (Passage), by this object and by those that share them.
// Every slot below the size holds either an element, which is checked out once, or
// null, or an item that an Arrival knows as not checked in yet.

using kaz::detail::Arrival;
using kaz::detail::HeldItem;
using kaz::detail::Passage;
using kaz::detail::Removal;
using kaz::detail::SourceWatch;

namespace {

/// Whether nobody can tell when @p function is called. The library's own copy of an
/// inline function is known here; with a program's copy, everything goes the general way.
bool isUnobserved(KazColl::CheckOut function) {
    return !function || function == KazString::checkOut;
}

} // namespace

/// A passage of a collection while it is under way.
template <typename P>
class KAZ_LOCAL KazColl::Under : public P {
public:
    template <typename... Arguments>
    explicit Under(const KazColl& coll, Arguments... arguments) : P(arguments...), owner(coll) {
        this->enter(owner.passages);
    }
    Under(const Under&) = delete;
    Under& operator=(const Under&) = delete;
    ~Under() { this->leave(owner.passages); }

private:
    const KazColl& owner;
};

/// Items on their way in. Those that have been checked in and did not get
/// there are checked out again; without a check-in they are still the caller's.
class KAZ_LOCAL KazColl::Incoming {
public:
    /// Place for up to @p most items.
    Incoming(const KazColl& owner, int most)
        : checkOutFunction(owner.checkInFunction ? owner.checkOutFunction : nullptr), limit(most) {
        if (most > 1)
            items = static_cast<void**>(
                kaz::detail::allocate(static_cast<std::size_t>(most) * sizeof(void*)));
    }
    Incoming(const Incoming&) = delete;
    Incoming& operator=(const Incoming&) = delete;
    ~Incoming() {
        while (checkOutFunction && count > 0)
            checkOutFunction(items[--count]);
        if (items != &single)
            std::free(items);
    }

    void checkIn(CheckIn function, void* const* from) {
        // Aside first: the items may be slots that a check-in moves.
        moveSlots(items, from, limit);
        while (count < limit)
            append(function, items[count]);
    }

    /// The elements of @p source, read one by one: a check-in that removes
    /// some has ended their life.
    void checkIn(CheckIn function, const KazColl& source) {
        while (count < limit && count < source.size)
            append(function, source.checkedInAt(count));
    }

    int size() const { return count; }

    /// The items, which now belong to the caller.
    void** surrender() {
        count = 0;
        return items;
    }

private:
    void append(CheckIn function, void* item) {
        items[count] = function ? function(item) : item;
        ++count;
    }

    CheckOut checkOutFunction;
    int limit;
    int count = 0;
    void* single = nullptr;
    void** items = &single;
};

KazColl::KazColl(const KazColl& other) : KazArrayPtr() {
    *this = other;
}

KazColl::~KazColl() {
    // More than once, should a check-out add something.
    while (data)
        letGo();
    for (KazCollIterator* i = iterators; i; i = i->nextIterator) {
        i->index = KazCollIterator::done;
        i->collection = nullptr;
    }
}

KazColl& KazColl::operator=(const KazColl& other) {
    if (this == &other)
        return *this;
    const Departing old = data && data == other.data ? Departing{} : depart();
    if (data != other.data)
        joinSharersOf(other);
    size = other.size;
    growthRate = other.growthRate;
    checkOutFunction = other.checkOutFunction;
    checkInFunction = other.checkInFunction;
    for (KazCollIterator* i = iterators; i; i = i->nextIterator) {
        if (i->index >= size)
            i->index = KazCollIterator::done;
    }
    dismiss(old);
    return *this;
}

void KazColl::joinSharersOf(const KazColl& other) {
    Storage& shared = other.storage();
    ++shared.owners;
    if (shared.occupied < 0)
        shared.occupied = other.size;
    data = other.data;
    capacity = other.capacity;
    nextSharer = other.nextSharer;
    other.nextSharer = this;
}

void KazColl::leaveSharers() {
    KazColl* before = nextSharer;
    while (before->nextSharer != this)
        before = before->nextSharer;
    before->nextSharer = nextSharer;
    nextSharer = this;
}

template <typename Visit>
void KazColl::forEachSharer(Visit visit) const {
    KazColl* sharer = nextSharer;
    for (; sharer != this; sharer = sharer->nextSharer)
        visit(*sharer);
    visit(*sharer);
}

/// Empties this object. What it held is the caller's to dismiss; its elements
/// only when nobody else has them.
KazColl::Departing KazColl::depart() {
    Departing contents{data, 0, checkOutFunction, isBusy()};
    for (Passage* each = passages; each; each = each->outer)
        each->abandoned();
    if (data && isAlone())
        contents.count = storage().occupied >= 0 ? storage().occupied : size;
    leaveSharers();
    data = nullptr;
    size = 0;
    capacity = 0;
    return contents;
}

void KazColl::dismiss(const Departing& contents) {
    const auto* slots = reinterpret_cast<const Slot*>(contents.slots);
    if (slots == nullptr)
        return;
    for (int i = contents.checkOut ? contents.count - 1 : -1; i >= 0; --i) {
        if (slots[i] || !contents.hasGaps)
            contents.checkOut(slots[i]);
    }
    release(contents.slots);
}

KazColl::CheckIn KazColl::setCheckIn(CheckIn function) {
    return std::exchange(checkInFunction, function);
}

KazColl::CheckOut KazColl::setCheckOut(CheckOut function) {
    return std::exchange(checkOutFunction, function);
}

// Objects that share storage may differ in size. The storage counts the slots
// that hold elements, so that each is checked out once, whoever comes last.

/// False for a slot that a removal through another object has vacated.
bool KazColl::holdsElement(int index) const {
    return storage().occupied < 0 || index < storage().occupied;
}

void* KazColl::take(int index) {
    void* item = slot(index);
    slot(index) = nullptr;
    return item;
}

/// Before the slots are rearranged: what only others count has no place in the
/// new arrangement and goes.
void KazColl::claimSlots() {
    while (data && storage().occupied > size)
        checkOutAt(--storage().occupied, false);
}

/// After the slots were rearranged.
void KazColl::noteSlots() {
    if (data && storage().occupied >= 0)
        storage().occupied = isAlone() ? -1 : size;
}

void KazColl::makeRoom(std::int64_t count) {
    if (count <= capacity)
        return;
    const int newCapacity = capacityFor(count);
    if (isAlone())
        KazArrayPtr::inflate(static_cast<int>(count));
    else if (checkOutFunction && !checkInFunction)
        moveTogether(newCapacity);
    else
        separate(newCapacity);
}

void KazColl::separate(int newCapacity) {
    // What has not come in yet when somebody else's growth meets it stays outside.
    forEachSharer([](KazColl& sharer) {
        for (Passage* each = sharer.passages; each; each = each->outer)
            for (int i = 0; i < sharer.size; ++i)
                if (each->yields(i))
                    sharer.take(i);
    });
    const auto drop = [](void** slots) { release(slots); };
    std::unique_ptr<void*, decltype(drop)> fresh(allocateSlots(newCapacity), drop);
    Incoming own(*this, size);
    own.checkIn(checkInFunction, *this);
    if (isAlone() || own.size() != size)
        return makeRoom(newCapacity); // a check-in has changed what there is to separate
    const int kept = size;
    moveSlots(fresh.get(), own.surrender(), kept);
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

void KazColl::inflate(int count) {
    makeRoom(count);
}

void KazColl::freeExtra() {
    if (!isAlone())
        return;
    claimSlots();
    noteSlots();
    KazArrayPtr::freeExtra();
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
    HeldItem held(checkInFunction, checkOutFunction, item);
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

void KazColl::setAt(int index, void* item) {
    const bool isNested = isBusy();
    Under<Removal> place(*this, index, index + 1, Removal::up);
    if (holdsElement(index))
        checkOutAt(index, isNested);
    HeldItem held(checkInFunction, checkOutFunction, item);
    index = place.begin;
    if (place.isEmpty() || index >= size) // an element function has removed the place
        return checkedOut(held.surrender());
    void* met = take(index);
    slot(index) = held.surrender();
    storage().occupied = std::max(storage().occupied, storage().occupied < 0 ? -1 : index + 1);
    if (met)
        checkedOut(met); // an element function has put it there
}

void KazColl::insertAt(int index, void* item) {
    HeldItem held(checkInFunction, checkOutFunction, item);
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

/// Returns where the first one came to stand.
int KazColl::insertAll(int index, void* const* items, int count, const KazColl* source) {
    if (isAlone())
        claimSlots(); // now, as that may change the source
    if (!isAlone())
        return insertAside(index, items, count, source);
    if (source) {
        items = source->data;
        count = source->size;
    }
    kaz::detail::HeapPtr<void*> aside;
    const bool isOwn = data && !std::less<>()(items, data) && std::less<>()(items, data + capacity);
    if (isOwn || (source && source->isBusy())) {
        // Own slots move; in others there may be what is no element yet.
        aside.reset(static_cast<void**>(
            kaz::detail::allocate(static_cast<std::size_t>(count) * sizeof(void*))));
        moveSlots(aside.get(), items, count);
        for (int i = 0; source && i < count; ++i)
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
    if (source)
        incoming.checkIn(checkInFunction, *source);
    else
        incoming.checkIn(checkInFunction, items);
    const int arrived = incoming.size();
    prepare(isAtEnd ? 0 : index, arrived);
    const int first = isAtEnd ? size : index;
    void** slots = openSlots(first, arrived);
    moveSlots(slots, incoming.surrender(), arrived);
    return first;
}

/// The slots are this object's alone, and the items elsewhere.
void KazColl::insertInPlace(int index, void* const* items, int count, const KazColl* source) {
    if (!checkInFunction || checkInFunction == KazString::checkIn) {
        // Nobody can look meanwhile.
        void** slots = openSlots(index, count);
        moveSlots(slots, items, count);
        if (checkInFunction)
            std::for_each_n(slots, count, KazString::checkIn);
        return;
    }
    Under<Arrival> arrival(*this, count);
    const Under<SourceWatch> watch(source ? *source : *this);
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
    const CheckIn function = checkInFunction;
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
        if (last < 0 || slot(last))
            continue;
        int first = last;
        while (number > from && arrival.placeOf(number - 1) == first - 1 && !slot(first - 1)) {
            --number;
            --first;
        }
        extract(first, last - first + 1);
    }
}

void KazColl::copy(const KazColl& other) {
    if (this == &other)
        return;
    // The memory first, while nothing is lost yet.
    KazColl room;
    room.inflate(other.size);
    removeAll();
    if (!data) {
        std::swap(data, room.data);
        std::swap(capacity, room.capacity);
    }
    append(other);
}

void KazColl::removeAt(int index, int count) {
    claimSlots();
    count = std::min(count, size - index);
    if (count <= 0)
        return;
    if (isUnobserved(checkOutFunction)) {
        for (int i = index; checkOutFunction && i < index + count; ++i)
            KazString::checkOut(take(i));
        return extract(index, count);
    }
    const bool isNested = isBusy();
    Under<Removal> going(*this, index, index + count, Removal::up);
    // A sharer may have moved the slots beyond this object's size.
    while (going.next < std::min(going.end, size))
        checkOutAt(going.next++, isNested);
    removeVacated(going);
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
        while (first < end && slot(first))
            ++first;
        int behind = first;
        while (behind < end && !slot(behind))
            ++behind;
        if (first >= behind)
            return;
        extract(first, behind - first);
    }
}

void KazColl::removeAll() {
    letGo();
    for (KazCollIterator* i = iterators; i; i = i->nextIterator)
        i->index = KazCollIterator::done;
}

/// Checks out from the last to the first, unless others have the elements, and gives
/// the storage back.
void KazColl::letGo() {
    if (isUnobserved(checkOutFunction) && passages == nullptr)
        return dismiss(depart());
    if (data && isAlone()) {
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
    forEachSharer([&busy](const KazColl& sharer) { busy = busy || sharer.passages; });
    return busy;
}

/// What is in the slot as an element; null for an item that has not come in yet, which
/// somebody else may let go of.
void* KazColl::checkedInAt(int index) const {
    bool isOutside = false;
    forEachSharer([&](const KazColl& sharer) {
        for (const Passage* each = sharer.passages; each; each = each->outer)
            isOutside = isOutside || each->knows(index);
    });
    return isOutside ? nullptr : slot(index);
}

/// Checks out what is in the slot, which is null from then on. When nested, null is
/// what is on its way out already.
void KazColl::checkOutAt(int index, bool isNested) {
    bool isOutside = false;
    forEachSharer([&](KazColl& sharer) {
        for (Passage* each = sharer.passages; each; each = each->outer) {
            each->elementLeaves();
            isOutside = isOutside || each->yields(index);
        }
    });
    void* item = take(index);
    if (!isOutside && (item || !isNested))
        checkedOut(item);
}

/// Here and in all that share the slots.
void KazColl::advanceIterators(int index, int count) {
    forEachSharer([=](KazColl& sharer) {
        for (Passage* each = sharer.passages; each; each = each->outer)
            each->inserted(index, count);
        for (KazCollIterator* i = sharer.iterators; i; i = i->nextIterator) {
            if (i->index >= index)
                i->index += count;
        }
    });
}

void KazColl::withdrawIterators(int index, int count) {
    forEachSharer([=](KazColl& sharer) {
        for (Passage* each = sharer.passages; each; each = each->outer)
            each->removed(index, count);
        for (KazCollIterator* i = sharer.iterators; i; i = i->nextIterator) {
            if (i->index >= index)
                i->index = std::max(i->index - count, index - 1);
        }
    });
}
