// SPDX-License-Identifier: Apache-2.0
// The slots lie behind a header in one block, and `data` points behind that header: an array
// without slots is one null pointer. Copies of an array share the block and count its owners.
// Nothing is copied when one of them writes; an array leaves the block only where it outgrows it
// or is emptied.
//
// Sums of an index and a count are made in 64 bits, and capacityFor alone decides what is too
// much. Whatever may fail for want of memory is done before anything changes.
#include "tools/containers/KazArrayPtr.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/platform/processor/slots.h"
#include "tools/util/detail/allocate.h"
#include "tools/util/detail/heap_ptr.h"
#include "tools/util/detail/within.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr float defaultGrowthRate = 1.3F;

std::size_t storageBytes(std::size_t header, int slots) {
    return header + static_cast<std::size_t>(slots) * sizeof(void*);
}

} // namespace

// Bytewise: a slot may at the time be in use as another type.
void KazArrayPtr::moveSlots(void** to, void* const* from, std::int64_t count) {
    if (count > 0)
        std::memmove(to, from, static_cast<std::size_t>(count) * sizeof(void*));
}

KazArrayPtr::KazArrayPtr(const KazArrayPtr& other) {
    *this = other;
}

KazArrayPtr::~KazArrayPtr() {
    release(data);
}

KazArrayPtr& KazArrayPtr::operator=(const KazArrayPtr& other) {
    // Taken before the old slots are dropped: they may be the same ones.
    if (other.data != nullptr)
        ++other.storage().owners;
    release(data);
    data = other.data;
    size = other.size;
    capacity = other.capacity;
    growthRate = other.growthRate;
    return *this;
}

void KazArrayPtr::setAtGrow(int index, void* item) {
    if (index >= size)
        grow(std::int64_t{index} + 1);
    slot(index) = item;
}

void KazArrayPtr::remove() {
    if (size > 0)
        --size;
}

void KazArrayPtr::setSize(int count) {
    if (count > size) {
        grow(count);
    } else if (count <= 0) {
        release(data);
        data = nullptr;
        capacity = 0;
        size = 0;
    } else {
        size = count;
    }
}

/// The slots between the old size and the new one read as null, whatever they held before.
void KazArrayPtr::grow(std::int64_t count) {
    reserve(count);
    std::fill(data + size, data + count, nullptr);
    size = static_cast<std::int32_t>(count);
}

/// In steps of four slots. Slots that there are already grow by the rate at least, so that
/// filling an array one by one takes time in proportion to its length.
int KazArrayPtr::capacityFor(std::int64_t count) const {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    std::int64_t wanted = (count + 3) & ~std::int64_t{3};
    if (data != nullptr) {
        // In float on purpose: the truncated product decides the capacity.
        const float extra = std::trunc((growthRate - 1.0F) * static_cast<float>(capacity));
        if (!(extra < static_cast<float>(most)))
            throw KazMemoryException();
        const std::int64_t grown =
            (capacity + static_cast<std::int64_t>(extra) + 4) & ~std::int64_t{3};
        wanted = std::max(wanted, grown);
    }
    if (wanted > most)
        throw KazMemoryException();
    return static_cast<int>(wanted);
}

void** KazArrayPtr::allocateSlots(int count) {
    auto* header =
        static_cast<Storage*>(kaz::detail::allocate(storageBytes(sizeof(Storage), count)));
    *header = {1, -1};
    return reinterpret_cast<void**>(header + 1);
}

void KazArrayPtr::release(void** slots) {
    if (slots != nullptr && --storageOf(slots).owners == 0)
        std::free(&storageOf(slots));
}

void KazArrayPtr::enlarge(std::int64_t count) {
    const int newCapacity = capacityFor(count);
    if (data != nullptr && storage().owners == 1) {
        void* block =
            kaz::detail::reallocate(&storage(), storageBytes(sizeof(Storage), newCapacity));
        data = reinterpret_cast<void**>(static_cast<Storage*>(block) + 1);
    } else {
        void** slots = allocateSlots(newCapacity);
        if (data != nullptr) {
            // Another owner of the old block may count more elements than this array does.
            storageOf(slots).occupied = storage().occupied;
            moveSlots(slots, data, std::max(size, storage().occupied));
        }
        release(data);
        data = slots;
    }
    capacity = newCapacity;
}

void KazArrayPtr::setGrowthRate(float rate) {
    growthRate = rate > 1.0F ? rate : defaultGrowthRate;
}

void KazArrayPtr::freeExtra() {
    // Slots that others look at must not move.
    if (size == capacity || storage().owners > 1)
        return;
    if (size == 0) {
        setSize(0);
        return;
    }
    // Not through the allocation helper: nobody needs to hear of a failed shrink.
    void* block = std::realloc(&storage(), storageBytes(sizeof(Storage), size));
    if (block == nullptr)
        return;
    data = reinterpret_cast<void**>(static_cast<Storage*>(block) + 1);
    capacity = size;
}

void KazArrayPtr::openGap(int index, int count) {
    const int oldSize = size;
    grow(std::int64_t{std::max(index, oldSize)} + count);
    moveSlots(data + index + count, data + index, std::int64_t{oldSize} - index);
}

void KazArrayPtr::insertAt(int index, void** items, int count) {
    // Slots of this storage move or are zeroed when the gap opens, also those
    // that only another array of a larger size counts.
    kaz::detail::HeapPtr<void*> aside;
    const auto slots = static_cast<std::size_t>(capacity);
    if (kaz::detail::isWithin<void*>(items, data, slots) && count > 0) {
        aside.reset(static_cast<void**>(kaz::detail::allocate(storageBytes(0, count))));
        moveSlots(aside.get(), items, count);
        items = aside.get();
    }
    openGap(index, count);
    moveSlots(data + index, items, count);
}

void KazArrayPtr::insertAt(int index, const KazArrayPtr& other) {
    if (other.size > 0)
        insertAt(index, other.data, other.size);
}

void KazArrayPtr::removeAt(int index, int count) {
    count = std::min(count, size - index);
    if (count <= 0)
        return;
    moveSlots(data + index, data + index + count, std::int64_t{size} - index - count);
    size -= count;
}

int KazArrayPtr::append(const KazArrayPtr& other) {
    const int first = size;
    insertAt(first, other);
    return first;
}

void KazArrayPtr::copy(const KazArrayPtr& other) {
    if (data == other.data) { // growing would zero what is to be copied
        size = other.size;
        return;
    }
    setSize(other.size);
    moveSlots(data, other.data, other.size);
}

int KazArrayPtr::findPtr(void* item) const {
    return static_cast<int>(kaz::host::findLastSlot(data, size, item));
}
