// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/detail/TextTable.h"

#include "tools/containers/detail/buckets.h"
#include "tools/strings/KazString.h"
#include "tools/util/detail/allocate.h"

#include <algorithm>

namespace kaz::detail {

namespace {

/// A table of more buckets than this may still get few keys.
constexpr std::int32_t mostExpected = 4096;

/// A key is looked at in this part of the time that a search in order takes.
constexpr std::size_t keysForSearch = 8;

} // namespace

TextTable::TextTable(KazBucket** buckets, std::int32_t count)
    : buckets(buckets),
      bucketCount(count),
      keys(static_cast<std::size_t>(std::min(count, mostExpected))),
      sorted(static_cast<std::int32_t*>(
          allocateZeroed(static_cast<std::size_t>(count) * sizeof(std::int32_t)))) {}

void TextTable::pay(std::int32_t cost) {
    paid += std::min(cost, 1 << 20);
    if (static_cast<std::size_t>(paid) * keysForSearch < keys.size())
        return;
    paid = 0;
    // First the count, as another thread may write meanwhile.
    seenWrites = sharedTextWrites.load(std::memory_order_relaxed);
    if (!keys.isUpToDate())
        rest();
}

TextTable::Slot* TextTable::slotOf(const void* key) {
    Slot* slot = active ? keys.slotOf(key) : nullptr;
    if (slot == nullptr && active)
        rest();
    return slot;
}

void TextTable::putInOrder(std::int32_t bucket) {
    KazBucket* block = buckets[bucket];
    std::int32_t& inOrder = sorted.get()[bucket];
    if (!active || !block || inOrder == block->count)
        return;
    const std::int32_t late = block->count - inOrder;
    sortTail(*block, inOrder, KazString::compareDisguised);
    inOrder = block->count;
    // What an iterator without the lock waits for.
    unsortedCount.store(unsorted() - late, std::memory_order_release);
}

void TextTable::putAllInOrder() {
    for (std::int32_t bucket = 0; !isInOrder() && bucket < bucketCount; ++bucket)
        putInOrder(bucket);
}

void TextTable::noteLast(std::int32_t bucket) {
    if (buckets[bucket]->count == 1)
        sorted.get()[bucket] = 1;
    else // changed under the lock only
        unsortedCount.store(unsorted() + 1, std::memory_order_relaxed);
}

void TextTable::rest() {
    putAllInOrder();
    active = false;
    keys.clear();
}

void TextTable::wake() {
    std::fill_n(sorted.get(), bucketCount, 0);
    unsortedCount.store(0, std::memory_order_relaxed);
    keys.clear();
    paid = 0;
    seenWrites = sharedTextWrites.load(std::memory_order_relaxed);
    active = true;
}

} // namespace kaz::detail
