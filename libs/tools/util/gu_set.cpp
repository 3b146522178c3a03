// SPDX-License-Identifier: Apache-2.0
// Elements stand in one array in the order of adding; removing leaves a hole
// there, so that positions of iterators stay good. A second array, at least
// twice as long and a power of two, maps a hash to a position by linear probing.
//
// Invariants: every live entry is reached from its hash before a free slot;
// a slot is free, abandoned (its element was removed) or the position of a live
// entry; at least half of the slots are free.

#include "tools/util/gu_set.h"

#include "tools/util/detail/heap_ptr.h"
#include "tools/util/detail/panic.h"
#include "tools/util/memory.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

namespace {

struct Entry {
    void* element;
    bool live;
};

constexpr int freeSlot = -1;
constexpr int abandonedSlot = -2;
constexpr int firstCapacity = 8;

/// More is not taken on trust: a set that gets there has grown by doubling.
constexpr int maxHint = 1 << 16;

/// Pointers differ in their middle bits, numbers in the lowest: mix all of them.
/// The constant is 2^64 divided by the golden ratio, made odd (Knuth, multiplicative hashing).
std::uint64_t hashOf(const void* element) {
    auto h = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(element));
    h ^= h >> 32;
    h *= 0x9E3779B97F4A7C15U;
    return h ^ (h >> 29);
}

} // namespace

struct _gu_set_struct_ {
    Entry* entries;
    int* slots;
    std::int64_t slotCount;
    int capacity; ///< of entries
    int used;     ///< entries in use, holes included
    int size;     ///< live entries
};

namespace {

/// Moves the live entries into arrays with room for @p capacity of them.
void rebuild(gu_set* set, int capacity) {
    std::int64_t slotCount = 2 * firstCapacity;
    while (slotCount < 2 * std::int64_t{capacity})
        slotCount *= 2;
    const char* function = "gu_set_add";
    kaz::detail::HeapPtr<Entry> entries(static_cast<Entry*>(kaz::detail::allocateOrPanic(
        static_cast<std::size_t>(capacity) * sizeof(Entry), function)));
    int* slots = static_cast<int*>(
        kaz::detail::allocateOrPanic(static_cast<std::size_t>(slotCount) * sizeof(int), function));
    std::fill_n(slots, slotCount, freeSlot);
    int used = 0;
    for (int i = 0; i < set->used; ++i) {
        if (!set->entries[i].live)
            continue;
        auto slot = static_cast<std::int64_t>(hashOf(set->entries[i].element)) & (slotCount - 1);
        // Abandoned slots are left behind, and all elements differ, so nothing is compared.
        while (slots[slot] != freeSlot)
            slot = (slot + 1) & (slotCount - 1);
        entries.get()[used] = set->entries[i];
        slots[slot] = used++;
    }
    std::free(set->entries);
    std::free(set->slots);
    *set = _gu_set_struct_{entries.release(), slots, slotCount, capacity, used, set->size};
}

/// The slot of @p element, or the free one that ends its search; -1 while
/// nothing was ever stored.
std::int64_t findSlot(const gu_set* set, const void* element) {
    if (set == nullptr || set->slotCount == 0)
        return -1;
    auto slot = static_cast<std::int64_t>(hashOf(element)) & (set->slotCount - 1);
    while (set->slots[slot] != freeSlot) {
        // An abandoned slot does not end the search: the element may lie behind it.
        const int position = set->slots[slot];
        if (position >= 0 && set->entries[position].element == element)
            break;
        slot = (slot + 1) & (set->slotCount - 1);
    }
    return slot;
}

/// Room for @p added entries more. Mostly holes: the same size again without them.
void makeRoom(gu_set* set, int added) {
    if (added <= set->capacity - set->used)
        return;
    const std::int64_t needed = std::int64_t{set->size} + added;
    if (needed > INT_MAX)
        memory_panic("gu_set_add");
    // Doubled only when more than half are live, or holes would make the array grow for ever.
    const std::int64_t grown = set->size > set->capacity / 2 ? 2 * std::int64_t{set->capacity}
                                                             : std::int64_t{set->capacity};
    const std::int64_t wanted = std::max({grown, needed, std::int64_t{firstCapacity}});
    rebuild(set, static_cast<int>(std::min<std::int64_t>(wanted, INT_MAX)));
}

/// First live entry at or behind @p position; -1 when there is none.
int liveFrom(const gu_set* set, int position) {
    for (; position < set->used; ++position)
        if (set->entries[position].live)
            return position;
    return -1;
}

struct DestroySet {
    void operator()(gu_set* set) const { gu_set_destroy(set); }
};
using OwnedSet = std::unique_ptr<gu_set, DestroySet>;

/// Adds to @p result what of @p set is in @p other (or is not, by @p wanted).
void addWhere(gu_set* result, const gu_set* set, const gu_set* other, bool wanted) {
    for (auto i = gu_set_init(set); !gu_set_done(i); gu_set_next(&i))
        if (gu_set_contains(other, gu_set_element(i)) == wanted)
            gu_set_add(result, gu_set_element(i));
}

/// Removes from @p set what is in @p other (or is not, by @p unwanted).
/// Removing while walking is safe: a hole moves nothing.
int removeWhere(gu_set* set, const gu_set* other, bool unwanted) {
    const int before = gu_set_size(set);
    for (auto i = gu_set_init(set); !gu_set_done(i); gu_set_next(&i))
        if (gu_set_contains(other, gu_set_element(i)) == unwanted)
            gu_set_remove(set, gu_set_element(i));
    return before - gu_set_size(set);
}

} // namespace

gu_set* gu_set_create(int sizeHint) {
    void* block = kaz::detail::allocateOrPanic(sizeof(gu_set), "gu_set_create");
    OwnedSet set(new (block) gu_set{nullptr, nullptr, 0, 0, 0, 0});
    if (sizeHint > 0)
        rebuild(set.get(), std::min(sizeHint, maxHint));
    return set.release();
}

void gu_set_destroy(gu_set* set) {
    if (set == nullptr)
        return;
    std::free(set->entries);
    std::free(set->slots);
    std::free(set);
}

gu_set* gu_set_copy(const gu_set* set) {
    return gu_set_union(set, nullptr);
}

bool gu_set_add(gu_set* set, void* element) {
    if (set == nullptr || gu_set_contains(set, element))
        return false;
    makeRoom(set, 1);
    // Searched again, as the room may have been made in new arrays.
    set->slots[findSlot(set, element)] = set->used;
    set->entries[set->used++] = Entry{element, true};
    ++set->size;
    return true;
}

bool gu_set_remove(gu_set* set, void* element) {
    if (!gu_set_contains(set, element))
        return false;
    const std::int64_t slot = findSlot(set, element);
    set->entries[set->slots[slot]].live = false;
    set->slots[slot] = abandonedSlot;
    --set->size;
    return true;
}

bool gu_set_contains(const gu_set* set, void* element) {
    const std::int64_t slot = findSlot(set, element);
    return slot >= 0 && set->slots[slot] != freeSlot;
}

int gu_set_size(const gu_set* set) {
    return set != nullptr ? set->size : 0;
}

void gu_set_clear(gu_set* set) {
    if (set == nullptr)
        return;
    std::fill_n(set->slots, set->slotCount, freeSlot);
    set->used = 0;
    set->size = 0;
}

gu_set* gu_set_union(const gu_set* a, const gu_set* b) {
    OwnedSet result(gu_set_create(gu_set_size(a)));
    gu_set_add_all(result.get(), a);
    gu_set_add_all(result.get(), b);
    return result.release();
}

gu_set* gu_set_intersection(const gu_set* a, const gu_set* b) {
    OwnedSet result(gu_set_create(0));
    addWhere(result.get(), a, b, true);
    return result.release();
}

gu_set* gu_set_difference(const gu_set* a, const gu_set* b) {
    OwnedSet result(gu_set_create(0));
    addWhere(result.get(), a, b, false);
    return result.release();
}

gu_set* gu_set_symmetric_difference(const gu_set* a, const gu_set* b) {
    OwnedSet result(gu_set_difference(a, b));
    addWhere(result.get(), b, a, false);
    return result.release();
}

int gu_set_add_all(gu_set* set, const gu_set* other) {
    if (set == nullptr)
        return 0;
    int added = 0;
    for (auto i = gu_set_init(other); !gu_set_done(i); gu_set_next(&i))
        added += gu_set_contains(set, gu_set_element(i)) ? 0 : 1;
    // Once there is room for all, nothing can fail half-way.
    makeRoom(set, added);
    // A set that is added to itself adds nothing, and is not walked while it grows.
    if (added > 0)
        for (auto i = gu_set_init(other); !gu_set_done(i); gu_set_next(&i))
            gu_set_add(set, gu_set_element(i));
    return added;
}

int gu_set_remove_all(gu_set* set, const gu_set* other) {
    return removeWhere(set, other, true);
}

int gu_set_retain_all(gu_set* set, const gu_set* other) {
    return removeWhere(set, other, false);
}

bool gu_set_subset(const gu_set* part, const gu_set* whole) {
    if (gu_set_size(part) > gu_set_size(whole))
        return false;
    for (auto i = gu_set_init(part); !gu_set_done(i); gu_set_next(&i))
        if (!gu_set_contains(whole, gu_set_element(i)))
            return false;
    return true;
}

bool gu_set_equal(const gu_set* a, const gu_set* b) {
    return gu_set_size(a) == gu_set_size(b) && gu_set_subset(a, b);
}

bool gu_set_disjoint(const gu_set* a, const gu_set* b) {
    for (auto i = gu_set_init(a); !gu_set_done(i); gu_set_next(&i))
        if (gu_set_contains(b, gu_set_element(i)))
            return false;
    return true;
}

gu_set_iterator gu_set_init(const gu_set* set) {
    return gu_set_iterator{set, set != nullptr ? liveFrom(set, 0) : -1};
}

void gu_set_next(gu_set_iterator* iterator) {
    if (iterator != nullptr && !gu_set_done(*iterator))
        iterator->position = liveFrom(iterator->set, iterator->position + 1);
}

bool gu_set_done(gu_set_iterator iterator) {
    return iterator.set == nullptr || iterator.position < 0 ||
           iterator.position >= iterator.set->used; // cleared meanwhile
}

void* gu_set_element(gu_set_iterator iterator) {
    if (gu_set_done(iterator) || !iterator.set->entries[iterator.position].live)
        return nullptr;
    return iterator.set->entries[iterator.position].element;
}

void gu_set_foreach(const gu_set* set, gu_set_action action, void* data) {
    for (auto i = gu_set_init(set); action != nullptr && !gu_set_done(i); gu_set_next(&i))
        action(gu_set_element(i), data);
}
