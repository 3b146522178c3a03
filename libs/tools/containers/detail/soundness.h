// SPDX-License-Identifier: Apache-2.0
/// @file
/// Whether the inside of a container holds together; for tests, which include it, and
/// not part of the library.
#pragma once

#include "tools/containers/KazCollIterator.h"
#include "tools/containers/detail/HeldTable.h"

#include <cstdint>

namespace kaz::detail {

/// Each false when an invariant is broken. Not to be asked while an element function
/// is being called.
struct Soundness {
    /// Counts, capacities and order of the buckets, the place of the last find, and
    /// the index, which repeats every entry. There is no order to look for when keys have
    /// come in under several rules of case.
    static bool holds(const KazHashTable& table, bool hasOrder = true) {
        const KazHashTable::Hidden& hidden = *table.hidden_;
        std::int64_t entries = 0;
        std::int64_t unsorted = 0;
        bool sound = hidden.departures.areNone();
        for (std::int32_t bucket = 0; bucket < hidden.bucketSlots; ++bucket) {
            KazBucket* block = table.buckets_[bucket];
            if (!block)
                continue;
            entries += block->count;
            unsorted += block->count - sortedIn(table, bucket);
            sound = sound && block->count > 0 && block->count <= block->capacity &&
                    (!hasOrder || isSorted(table, *block, sortedIn(table, bucket)));
        }
        sound = sound && entries == table.entryCount_ && holdsPlace(table);
        const auto& texts = hidden.texts;
        if (!texts)
            return sound;
        sound = sound && texts->unsorted() == unsorted && texts->index().isSound();
        return sound && (!texts->isActive() || isRepeated(table));
    }

    /// Sizes, iterators, and the ring of those that share the slots.
    static bool holds(const KazColl& coll) {
        bool sound = coll.size >= 0 && coll.size <= coll.capacity && !coll.passages_ &&
                     (coll.data != nullptr) == (coll.capacity > 0);
        for (const KazCollIterator* i = coll.iterators_; i; i = i->nextIterator_)
            sound = sound && i->collection_ == &coll && i->index_ >= -2;
        int sharers = 1;
        for (const KazColl* other = coll.nextSharer_; other != &coll; other = other->nextSharer_) {
            sound = sound && other->data == coll.data && other->capacity == coll.capacity;
            ++sharers;
        }
        if (!coll.data)
            return sound && sharers == 1;
        const auto& storage = coll.storage();
        return sound && storage.owners == sharers && storage.occupied <= coll.capacity &&
               (storage.occupied >= 0 || sharers == 1);
    }

private:
    static std::int32_t sortedIn(const KazHashTable& table, std::int32_t bucket) {
        const auto& texts = table.hidden_->texts;
        return texts && texts->isActive() ? texts->sortedIn(bucket) : table.buckets_[bucket]->count;
    }

    static bool isSorted(const KazHashTable& table, KazBucket& block, std::int32_t count) {
        for (std::int32_t i = 1; i < count; ++i)
            if (table.compare_(block.entries()[i - 1].key, block.entries()[i].key) >= 0)
                return false;
        return true;
    }

    static bool holdsPlace(const KazHashTable& table) {
        if (table.cachedIndex_ < 0)
            return true;
        const KazBucket* block = table.buckets_[table.cachedBucket_];
        return block && table.cachedIndex_ < block->count;
    }

    static bool isRepeated(const KazHashTable& table) {
        const auto& index = table.hidden_->texts->index();
        bool sound = index.size() == static_cast<std::size_t>(table.entryCount_);
        for (std::int32_t bucket = 0; bucket < table.hidden_->bucketSlots; ++bucket) {
            KazBucket* block = table.buckets_[bucket];
            for (std::int32_t i = 0; block && i < block->count; ++i) {
                const auto* slot = index.slotOf(block->entries()[i].key);
                sound = sound && slot && slot->value == block->entries()[i].value;
            }
        }
        return sound;
    }
};

} // namespace kaz::detail
