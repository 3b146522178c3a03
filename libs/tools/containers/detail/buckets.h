// SPDX-License-Identifier: Apache-2.0
/// @file
/// The blocks of a hash table's buckets: their room, their order, a search in them.
#pragma once

#include "tools/containers/KazHashTable.h"
#include "tools/util/detail/CaseRules.h"

#include <cstdint>

namespace kaz::detail {

/// Makes room for one entry more, in a new block where there is none (its count is
/// then 0). KazMemoryException leaves all as it was.
void makeRoom(KazBucket*& block);

/// Gives back room that the entries do not need; without memory for that, nothing
/// happens. A null @p block is ignored.
void giveBackRoom(KazBucket*& block);

/// Puts an entry in front of the one at @p index, after makeRoom.
void insertEntry(KazBucket& block, std::int32_t index, KazBucketEntry entry);

/// Takes the entry at @p index out. A block without entries is freed and null.
void removeEntry(KazBucket*& block, std::int32_t index);

/// An order of keys: that of @p compare, or that of @p rules where there are any.
struct KeyOrder {
    KazHashTable::Compare compare;
    const CaseRules* rules = nullptr;
    int operator()(const void* a, const void* b) const {
        return rules != nullptr ? rules->compare(a, b) : compare(a, b);
    }
};

/// Puts a block in order of which the first @p sorted entries are. Needs no memory:
/// a few are merged by portions, many are sorted with the rest.
void sortTail(KazBucket& block, std::int32_t sorted, const KeyOrder& order);

/// Where a key is in its bucket, or where it would be inserted.
struct Place {
    std::int32_t index;
    bool found;
};

/// Binary search in an ordered @p block, which may be null; the calls of @p compare
/// are part of the contract. @p holes tells in `endOfHole(index)` where a run of
/// entries ends that must not be compared, @p index itself where there is none.
template <typename Holes>
Place searchEntries(KazBucket* block, const void* key, KazHashTable::Compare compare,
                    const Holes& holes) {
    std::int32_t low = 0;
    std::int32_t high = block != nullptr ? block->count : 0;
    while (low < high) {
        const std::int32_t half = low + (high - low) / 2;
        const std::int32_t middle = holes.endOfHole(half);
        if (middle >= high) {
            high = half; // from there on nothing is left to be compared
            continue;
        }
        const int order = compare(key, block->entries()[middle].key);
        if (order == 0)
            return {middle, true};
        if (order < 0)
            high = half;
        else
            low = middle + 1;
    }
    return {holes.endOfHole(low), false};
}

} // namespace kaz::detail
