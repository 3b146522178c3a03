#include "tools/containers/KazColl.h"

#include "tools/containers/KazCollIterator.h"
#include "tools/util/detail/allocate.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

// Element functions may do anything to the collection that calls them. So
// nothing is ever half in: items are checked in aside (Incoming) and then put
// into the slots, and they are out of the slots before they are checked out.

/// Items on their way in. Those that have been checked in and did not get
/// there are checked out again; without a check-in they are still the caller's.
class KazColl::Incoming {
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
            append(function, source.slot(count));
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
        dismiss(depart());
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
void KazColl::forEachSharer(Visit visit) {
    KazColl* sharer = this;
    do {
        visit(*sharer);
        sharer = sharer->nextSharer;
    } while (sharer != this);
}

/// Empties this object. What it held is the caller's to dismiss; its elements
/// only when nobody else has them.
KazColl::Departing KazColl::depart() {
    Departing contents{data, 0, checkOutFunction};
    if (data && isAlone())
        contents.count = storage().occupied >= 0 ? storage().occupied : size;
    leaveSharers();
    data = nullptr;
    size = 0;
    capacity = 0;
    return contents;
}

void KazColl::dismiss(const Departing& contents) {
    if (contents.checkOut) {
        const auto* slots = reinterpret_cast<const Slot*>(contents.slots);
        for (int i = contents.count - 1; i >= 0; --i)
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
    while (data && storage().occupied > size) {
        const int last = --storage().occupied;
        checkedOut(take(last));
    }
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

int KazColl::appendItems(Incoming& items) {
    const int count = items.size();
    prepare(0, count);
    const int first = size;
    KazArrayPtr::insertAt(first, items.surrender(), count);
    noteSlots();
    return first;
}

void KazColl::insertItems(int index, Incoming& items) {
    const int count = items.size();
    prepare(index, count);
    KazArrayPtr::insertAt(index, items.surrender(), count);
    noteSlots();
    advanceIterators(index, count);
}

int KazColl::add(void* item) {
    Incoming items(*this, 1);
    items.checkIn(checkInFunction, &item);
    if (size >= capacity || storage().occupied >= 0)
        return appendItems(items);
    // Room in slots that are nobody else's: the usual case, in half the time.
    slot(size) = *items.surrender();
    return size++;
}

void KazColl::setAt(int index, void* item) {
    if (holdsElement(index))
        checkedOut(take(index));
    Incoming items(*this, 1);
    items.checkIn(checkInFunction, &item);
    if (index >= size) // an element function has removed the place
        return checkedOut(*items.surrender());
    void* met = take(index);
    slot(index) = *items.surrender();
    storage().occupied = std::max(storage().occupied, storage().occupied < 0 ? -1 : index + 1);
    if (met)
        checkedOut(met); // an element function has put it there
}

void KazColl::insertAt(int index, void* item) {
    insertAt(index, &item, 1);
}

void KazColl::insertAt(int index, void** items, int count) {
    Incoming incoming(*this, count);
    incoming.checkIn(checkInFunction, items);
    insertItems(index, incoming);
}

void KazColl::insertAt(int index, const KazColl& other) {
    if (other.size == 0)
        return;
    Incoming incoming(*this, other.size);
    incoming.checkIn(checkInFunction, other);
    insertItems(index, incoming);
}

int KazColl::append(const KazColl& other) {
    Incoming items(*this, other.size);
    items.checkIn(checkInFunction, other);
    return appendItems(items);
}

void KazColl::copy(const KazColl& other) {
    if (this == &other)
        return;
    // The memory first, while nothing is lost yet.
    Incoming items(*this, other.size);
    KazColl room;
    room.inflate(other.size);
    removeAll();
    items.checkIn(checkInFunction, other);
    if (!data) {
        std::swap(data, room.data);
        std::swap(capacity, room.capacity);
    }
    appendItems(items);
}

void KazColl::removeAt(int index, int count) {
    claimSlots();
    void* few[64];
    const auto drop = [](void** block) { std::free(block); };
    std::unique_ptr<void*, decltype(drop)> many(nullptr, drop);
    count = std::min(count, size - index);
    int portion = static_cast<int>(std::size(few));
    // Removal must not fail for want of memory: without it, by portions.
    if (count > portion)
        many.reset(
            static_cast<void**>(std::malloc(static_cast<std::size_t>(count) * sizeof(void*))));
    if (many)
        portion = count;
    for (; count > 0; count = std::min(count - portion, size - index)) {
        void** removed = many ? many.get() : few;
        const int taken = std::min(count, portion);
        extract(index, taken, removed);
        std::for_each_n(removed, taken, [this](void* item) { checkedOut(item); });
    }
}

/// Takes elements out of the slots, for the caller to check out.
void KazColl::extract(int index, int count, void** removed) {
    const int oldSize = size;
    moveSlots(removed, data + index, count);
    KazArrayPtr::removeAt(index, count);
    if (!isAlone())
        std::fill(data + size, data + oldSize, nullptr);
    noteSlots();
    withdrawIterators(index, count);
}

void KazColl::removeAll() {
    dismiss(depart());
    for (KazCollIterator* i = iterators; i; i = i->nextIterator)
        i->index = KazCollIterator::done;
}

void KazColl::advanceIterators(int index, int count) {
    forEachSharer([=](KazColl& sharer) {
        for (KazCollIterator* i = sharer.iterators; i; i = i->nextIterator) {
            if (i->index >= index)
                i->index += count;
        }
    });
}

void KazColl::withdrawIterators(int index, int count) {
    forEachSharer([=](KazColl& sharer) {
        for (KazCollIterator* i = sharer.iterators; i; i = i->nextIterator) {
            if (i->index >= index)
                i->index = std::max(i->index - count, index - 1);
        }
    });
}
