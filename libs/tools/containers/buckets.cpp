// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/detail/buckets.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/util/detail/allocate.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

// A bucket's capacity follows the size in bytes that its block would have with
// 32-bit pointers; the block itself is as large as the capacity needs.

namespace kaz::detail {

namespace {

/// How many entries are merged at once.
constexpr std::ptrdiff_t portion = 16;

struct Precedes {
    const KeyOrder& order;
    bool operator()(const KazBucketEntry& a, const KazBucketEntry& b) const {
        return order(a.key, b.key) < 0;
    }
};

constexpr std::int64_t narrowHeader = 8;
constexpr std::int64_t narrowEntry = 8;

std::int64_t capacityOf(std::int64_t narrowSize) {
    return (narrowSize - narrowHeader) / narrowEntry;
}

/// About 30 % more, in blocks of 16 bytes. The constant is 1 - 1.3 in float.
std::int64_t grownCapacity(std::int32_t capacity) {
    const auto less = static_cast<std::int64_t>(static_cast<float>(capacity) * -0.29999995F);
    const std::int64_t wanted = capacity - less;
    return capacityOf((wanted * narrowEntry + 31) & ~std::int64_t{15});
}

/// The least capacity of such a block that holds @p count entries.
std::int64_t tightCapacity(std::int32_t count) {
    return capacityOf((std::int64_t{count} * narrowEntry + 23) & ~std::int64_t{15});
}

std::size_t blockBytes(std::int64_t capacity) {
    return sizeof(KazBucket) + static_cast<std::size_t>(capacity) * sizeof(KazBucketEntry);
}

/// Puts the @p count entries from @p tail on in order and merges them into the
/// sorted ones before them.
void mergeFew(KazBucketEntry* entries, KazBucketEntry* tail, std::ptrdiff_t count,
              const KeyOrder& order) {
    const auto precedes = Precedes{order};
    KazBucketEntry few[portion];
    std::sort(tail, tail + count, precedes);
    for (std::ptrdiff_t i = 0; i < count; ++i) // g++ 12 misreads std::copy_n at -O3
        few[i] = tail[i];
    while (count > 0) {
        KazBucketEntry* place = std::upper_bound(entries, tail, few[count - 1], precedes);
        std::copy_backward(place, tail, tail + count);
        tail = place;
        --count;
        tail[count] = few[count];
    }
}

} // namespace

void makeRoom(KazBucket*& block) {
    if (block != nullptr && block->count < block->capacity)
        return;
    const std::int64_t capacity = block != nullptr ? grownCapacity(block->capacity) : 1;
    if (capacity > std::numeric_limits<std::int32_t>::max())
        throw KazMemoryException();
    const std::int32_t count = block != nullptr ? block->count : 0;
    block = static_cast<KazBucket*>(reallocate(block, blockBytes(capacity)));
    block->count = count;
    block->capacity = static_cast<std::int32_t>(capacity);
}

void giveBackRoom(KazBucket*& block) {
    if (block == nullptr || tightCapacity(block->count) >= block->capacity)
        return;
    const std::int64_t capacity = tightCapacity(block->count);
    // Not through the allocation helper: nobody needs to hear of a failed shrink.
    auto* shrunk = static_cast<KazBucket*>(std::realloc(block, blockBytes(capacity)));
    if (shrunk == nullptr)
        return;
    shrunk->capacity = static_cast<std::int32_t>(capacity);
    block = shrunk;
}

void insertEntry(KazBucket& block, std::int32_t index, KazBucketEntry entry) {
    KazBucketEntry* entries = block.entries();
    std::copy_backward(entries + index, entries + block.count, entries + block.count + 1);
    entries[index] = entry;
    ++block.count;
}

void removeEntry(KazBucket*& block, std::int32_t index) {
    KazBucketEntry* entries = block->entries();
    std::copy(entries + index + 1, entries + block->count, entries + index);
    if (--block->count == 0) {
        std::free(block);
        block = nullptr;
    }
}

/// A long tail is sorted with all the rest; a short one is merged in portions, each of which
/// moves what is behind it once instead of once for each entry.
void sortTail(KazBucket& block, std::int32_t sorted, const KeyOrder& order) {
    KazBucketEntry* entries = block.entries();
    const std::ptrdiff_t count = block.count;
    if (count - sorted > count / 32)
        return std::sort(entries, entries + count, Precedes{order});
    std::ptrdiff_t merged = 0;
    for (std::ptrdiff_t from = sorted; from < count; from += merged) {
        merged = std::min(count - from, portion);
        mergeFew(entries, entries + from, merged, order);
    }
}

} // namespace kaz::detail
