#include "tools/containers/KazHashTable.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/containers/detail/TableGuard.h"
#include "tools/containers/detail/TextIndex.h"
#include "tools/containers/detail/held_item.h"
#include "tools/platform/processor/vector.h"
#include "tools/strings/KazString.h"
#include "tools/strings/detail/shared_writes.h"
#include "tools/util/detail/allocate.h"
#include "tools/util/detail/heap_ptr.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

// Where the string class's own functions order and hash the keys, a table goes
// by its TextIndex and puts a bucket in order only when somebody may see that:
// 100,000 names in one bucket took 400 ms to bind in shuffled order, and 550 ns
// to find one, by sorted insertion and binary search alone. With any other
// functions the calls of the comparator are part of the contract; and keys that
// are not checked in may change, or go before the table does, so that they are
// put in order when they are bound and never looked at without need.
//
// A bucket's capacity follows the size in bytes that its block would have with
// 32-bit pointers; the block itself is as large as the capacity needs.

using kaz::detail::HeldItem;
using kaz::detail::TextProbe;

namespace {

using CheckIn = KazHashTable::CheckIn;
using CheckOut = KazHashTable::CheckOut;
using Compare = KazHashTable::Compare;

/// Who asks for so many buckets or fewer is taken to have as many keys.
constexpr std::size_t mostExpected = 4096;

/// What a member is told of the length of a key that may not even be a text.
constexpr std::int32_t unknownLength = -1;

TextProbe probeOf(const void* key, std::int32_t length) {
    return length == unknownLength ? TextProbe(key)
                                   : TextProbe(static_cast<const char*>(key), length);
}

/// How many entries are merged at once.
constexpr std::ptrdiff_t portion = 16;

struct Precedes {
    Compare compare;
    bool operator()(const KazBucketEntry& a, const KazBucketEntry& b) const {
        return compare(a.key, b.key) < 0;
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

std::int64_t tightCapacity(std::int32_t count) {
    return capacityOf((std::int64_t{count} * narrowEntry + 23) & ~std::int64_t{15});
}

std::size_t blockBytes(std::int64_t capacity) {
    return sizeof(KazBucket) + static_cast<std::size_t>(capacity) * sizeof(KazBucketEntry);
}

void passOut(CheckOut function, void* item) {
    if (function == KazString::checkOut)
        KazString::checkOut(item); // inline
    else if (function)
        function(item);
}

/// Puts the @p count entries from @p tail on in order and merges them into the
/// sorted ones before them.
void mergeFew(KazBucketEntry* entries, KazBucketEntry* tail, std::ptrdiff_t count,
              Compare compare) {
    const auto precedes = Precedes{compare};
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

/// Sorts @p count entries of which the first @p sorted are in order. Needs no
/// memory: a few are merged by portions, many are sorted with the rest.
void sortTail(KazBucketEntry* entries, std::ptrdiff_t sorted, std::ptrdiff_t count,
              Compare compare) {
    if (count - sorted > count / 32)
        return std::sort(entries, entries + count, Precedes{compare});
    for (std::ptrdiff_t merged = 0; sorted < count; sorted += merged) {
        merged = std::min(count - sorted, portion);
        mergeFew(entries, entries + sorted, merged, compare);
    }
}

// The library's own copies of two inline functions are known here, so the string map
// is served; with a program's copies, everything goes the general way.

/// Whether @p function can be called without anybody noticing when.
bool isSilent(CheckOut function) {
    return !function || function == KazString::checkOut;
}

/// Whether @p function leaves every text as it is.
bool keepsText(CheckIn function) {
    return !function || function == KazString::checkIn;
}

} // namespace

KazHashTable::KazHashTable(Compare compare, Hash hash, int size)
    : bucketCount(size), hash(hash), compare(compare) {
    const bool hasTexts =
        compare == KazString::compareDisguised && hash == KazString::hashDisguised;
    const auto slots = static_cast<std::size_t>(bucketSlots());
    const std::size_t slotBytes = sizeof(KazBucket*) + (hasTexts ? sizeof(std::int32_t) : 0);
    kaz::detail::HeapPtr<KazBucket*> block(
        static_cast<KazBucket**>(kaz::detail::allocateZeroed(slots * slotBytes)));
    if (hasTexts) {
        texts = std::make_unique<kaz::detail::TextIndex>(std::min(slots, mostExpected));
        sortedCounts = reinterpret_cast<std::int32_t*>(block.get() + slots);
    }
    buckets = block.release();
}

KazHashTable::~KazHashTable() {
    // More than once, should a check-out bind something.
    while (entryCount > 0)
        clear();
    std::free(buckets);
}

void KazHashTable::setKeyCheckIn(CheckIn function) {
    const Guard guard(*this);
    keyCheckIn = function;
}

void KazHashTable::setKeyCheckOut(CheckOut function) {
    const Guard guard(*this);
    keyCheckOut = function;
}

void KazHashTable::setValueCheckIn(CheckIn function) {
    const Guard guard(*this);
    valueCheckIn = function;
}

void KazHashTable::setValueCheckOut(CheckOut function) {
    const Guard guard(*this);
    valueCheckOut = function;
}

std::int32_t KazHashTable::bucketOf(const void* key) const {
    if (bucketCount <= 1)
        return 0;
    return bucketOfHash(hash(key));
}

std::int32_t KazHashTable::bucketOfHash(unsigned hashed) const {
    return static_cast<std::int32_t>(hashed % static_cast<std::uint32_t>(bucketCount));
}

/// Where the key is, or where it would be inserted.
KazHashTable::Position KazHashTable::findKey(const void* key) const {
    if (goesByIndex())
        return findText(key);
    const Position cached{cachedBucket, cachedIndex, true};
    if (cachedIndex >= 0) {
        putInOrder(cachedBucket);
        if (compare(key, entryAt(cached).key) == 0)
            return withSlot(key, cached);
    }
    const std::int32_t bucket = bucketOf(key);
    putInOrder(bucket);
    return withSlot(key, search(bucket, key));
}

/// Where a text has changed in a block that others hold, it may be a key, and only
/// the prescribed search finds what it always found. The index goes along.
bool KazHashTable::goesByIndex() const {
    return texts && !kaz::detail::sharedTextWritten.load(std::memory_order_relaxed);
}

KazHashTable::Position KazHashTable::withSlot(const void* key, Position position) const {
    if (texts && position.found) {
        const void* stored = entryAt(position).key;
        const TextProbe probe(key);
        position.slot = texts->find(probe, probe.hash());
        if (!position.slot || position.slot->key != stored)
            position.slot = texts->slotOf(stored);
    }
    return position;
}

/// The same by the index. A key that is new comes last, in whatever order.
KazHashTable::Position KazHashTable::findText(const void* key) const {
    const std::int32_t bucket = bucketOf(key);
    const TextProbe probe(key);
    if (kaz::detail::TextSlot* slot = texts->find(probe, probe.hash())) {
        putInOrder(bucket);
        Position position = search(bucket, key);
        position.slot = slot;
        // A text that somebody has changed in its block may be out of order.
        if (position.found && entryAt(position).key == slot->key)
            return position;
    }
    return {bucket, buckets[bucket] ? buckets[bucket]->count : 0, false};
}

KazHashTable::Position KazHashTable::search(std::int32_t bucket, const void* key) const {
    Position position{bucket, 0, false};
    KazBucket* block = buckets[bucket];
    std::int32_t high = block ? block->count : 0;
    while (position.index < high) {
        const std::int32_t middle = position.index + (high - position.index) / 2;
        const int order = compare(key, block->entries()[middle].key);
        if (order == 0)
            return {bucket, middle, true};
        if (order < 0)
            high = middle;
        else
            position.index = middle + 1;
    }
    return position;
}

void KazHashTable::putAllInOrder() const {
    const Guard guard(*this);
    for (std::int32_t bucket = 0; bucket < bucketSlots(); ++bucket)
        putInOrder(bucket);
}

void KazHashTable::putInOrder(std::int32_t bucket) const {
    KazBucket* block = buckets[bucket];
    if (!texts || !block || sortedCounts[bucket] == block->count)
        return;
    const std::int32_t unsorted = block->count - sortedCounts[bucket];
    sortTail(block->entries(), sortedCounts[bucket], block->count, compare);
    sortedCounts[bucket] = block->count;
    // What an iterator without the lock waits for.
    unsortedCount.store(unsortedCount.load(std::memory_order_relaxed) - unsorted,
                        std::memory_order_release);
}

/// The position after element functions have been called: the one found
/// before, unless they have changed the table.
KazHashTable::Position KazHashTable::findAgain(const void* key, const Position& before,
                                               std::uint32_t revisionBefore) const {
    return revision == revisionBefore ? before : findKey(key);
}

KazBucketEntry& KazHashTable::entryAt(const Position& position) const {
    return buckets[position.bucket]->entries()[position.index];
}

void KazHashTable::remember(const Position& position) {
    cachedBucket = position.bucket;
    cachedIndex = position.index;
}

bool KazHashTable::bind(void* key, void* value, bool replace) {
    return bind(key, unknownLength, value, replace);
}

bool KazHashTable::bind(void* key, std::int32_t length, void* value, bool replace) {
    const Guard guard(*this);
    if (texts && !keyCheckIn) {
        putAllInOrder();
        texts.reset();
        ++revision; // a caller further up may know a slot
    }
    if (goesByIndex() && keepsText(keyCheckIn) && keepsText(valueCheckIn)) {
        const TextProbe probe = probeOf(key, length);
        const std::uint32_t textHash = probe.hash();
        if (!texts->find(probe, textHash)) {
            append(key, value, probe, textHash);
            return true;
        }
    }
    Position position = findKey(key);
    if (position.found && !replace)
        return false;
    if (position.found)
        return replaceValue(key, position, value);
    const std::uint32_t revisionBefore = revision;
    HeldItem newKey(keyCheckIn, keyCheckOut, key);
    HeldItem newValue(valueCheckIn, valueCheckOut, value);
    position = findAgain(key, position, revisionBefore);
    if (position.found && !replace)
        return false;
    if (position.found) {
        void* old = exchangeValue(position, newValue.surrender());
        remember(position);
        passOut(valueCheckOut, old);
        return true;
    }
    if (texts) {
        ++revision; // slots move
        texts->reserve();
    }
    makeRoom(position.bucket);
    insert(position, newKey.surrender(), newValue.surrender());
    return true;
}

bool KazHashTable::rebind(void* key, void* value) {
    const Guard guard(*this);
    const Position position = findKey(key);
    return position.found && replaceValue(key, position, value);
}

void* KazHashTable::exchangeValue(const Position& position, void* value) {
    if (position.slot)
        position.slot->value = value;
    return std::exchange(entryAt(position).value, value);
}

/// False when an element function has unbound the key meanwhile.
bool KazHashTable::replaceValue(const void* key, Position position, void* value) {
    const std::uint32_t revisionBefore = revision;
    remember(position);
    passOut(valueCheckOut, exchangeValue(position, nullptr));
    HeldItem newValue(valueCheckIn, valueCheckOut, value);
    position = findAgain(key, position, revisionBefore);
    if (!position.found)
        return false;
    void* met = exchangeValue(position, newValue.surrender());
    remember(position);
    if (met)
        passOut(valueCheckOut, met); // an element function has put it there
    return true;
}

/// Makes the bucket's block large enough for one entry more.
void KazHashTable::makeRoom(std::int32_t bucket) {
    KazBucket* block = buckets[bucket];
    if (block && block->count < block->capacity)
        return;
    const std::int64_t capacity = block ? grownCapacity(block->capacity) : 1;
    if (capacity > std::numeric_limits<std::int32_t>::max())
        throw KazMemoryException();
    const bool isNew = block == nullptr;
    block = static_cast<KazBucket*>(kaz::detail::reallocate(block, blockBytes(capacity)));
    if (isNew)
        block->count = 0;
    block->capacity = static_cast<std::int32_t>(capacity);
    buckets[bucket] = block;
}

void KazHashTable::insert(const Position& position, void* key, void* value) {
    KazBucket* block = buckets[position.bucket];
    KazBucketEntry* entries = block->entries();
    std::copy_backward(entries + position.index, entries + block->count,
                       entries + block->count + 1);
    entries[position.index] = {key, value};
    ++block->count;
    ++entryCount;
    ++revision;
    remember(position);
    if (!texts)
        return;
    const TextProbe probe(key);
    texts->add(key, value, probe.length(), probe.hash());
    noteUnsorted(position.bucket);
}

/// insert for a text that the index does not have and element functions that cannot
/// be told from no call: most of what fills a table, in half the time.
void KazHashTable::append(void* key, void* value, const TextProbe& probe, std::uint32_t textHash) {
    ++revision; // slots move
    texts->reserve();
    // What KazString::hashDisguised would say, without measuring the text again.
    const std::int32_t bucket =
        bucketCount > 1 ? bucketOfHash(kaz::host::bytes().hash(probe.text(), probe.length())) : 0;
    makeRoom(bucket);
    if (keyCheckIn)
        KazString::checkIn(key);
    if (valueCheckIn)
        KazString::checkIn(value);
    KazBucket* block = buckets[bucket];
    const std::int32_t index = block->count++;
    block->entries()[index] = {key, value};
    ++entryCount;
    remember({bucket, index, true});
    texts->add(key, value, probe.length(), textHash);
    noteUnsorted(bucket);
}

/// After an entry has come last in its bucket, in whatever order.
void KazHashTable::noteUnsorted(std::int32_t bucket) {
    if (buckets[bucket]->count == 1)
        sortedCounts[bucket] = 1;
    else // changed under the lock only
        unsortedCount.store(unsortedCount.load(std::memory_order_relaxed) + 1,
                            std::memory_order_relaxed);
}

bool KazHashTable::unbind(const void* key) {
    const Guard guard(*this);
    const Position position = findKey(key);
    if (!position.found)
        return false;
    const KazBucketEntry entry = extract(position);
    passOut(valueCheckOut, entry.value);
    passOut(keyCheckOut, entry.key);
    return true;
}

KazBucketEntry KazHashTable::extract(const Position& position) {
    KazBucket* block = buckets[position.bucket];
    KazBucketEntry* entries = block->entries();
    const KazBucketEntry entry = entries[position.index];
    std::copy(entries + position.index + 1, entries + block->count, entries + position.index);
    if (--block->count == 0) {
        std::free(block);
        buckets[position.bucket] = nullptr;
    }
    --entryCount;
    ++revision;
    cachedIndex = -1;
    if (texts) {
        texts->remove(position.slot);
        --sortedCounts[position.bucket];
    }
    return entry;
}

void* KazHashTable::valueOf(const void* key) {
    bool found = false;
    return valueOf(key, found);
}

void* KazHashTable::valueOf(const void* key, bool& found) {
    const Guard guard(*this);
    return lookUp(key, unknownLength, found);
}

void* KazHashTable::lookUp(const void* key, std::int32_t length, bool& found) {
    if (!goesByIndex())
        return lookUpInOrder(key, found);
    const TextProbe probe = probeOf(key, length);
    const kaz::detail::TextSlot* slot = texts->find(probe, probe.hash());
    found = slot != nullptr;
    return found ? slot->value : nullptr;
}

void* KazHashTable::lookUpInOrder(const void* key, bool& found) {
    const Position position = findKey(key);
    found = position.found;
    if (!found)
        return nullptr;
    remember(position);
    return entryAt(position).value;
}

bool KazHashTable::isBound(const void* key) {
    bool found = false;
    valueOf(key, found);
    return found;
}

int KazHashTable::getSize() const {
    const Guard guard(*this);
    return entryCount;
}

void KazHashTable::clear() {
    const Guard guard(*this);
    if (texts && !(isSilent(keyCheckOut) && isSilent(valueCheckOut)))
        putAllInOrder();
    // Meanwhile the table does without: what check-outs bind is sorted in.
    std::unique_ptr<kaz::detail::TextIndex> aside = std::move(texts);
    unsortedCount = 0;
    for (std::int32_t bucket = 0; bucket < bucketSlots(); ++bucket) {
        KazBucket* block = std::exchange(buckets[bucket], nullptr);
        if (!block)
            continue;
        if (aside)
            sortedCounts[bucket] = 0;
        entryCount -= block->count;
        ++revision;
        cachedIndex = -1;
        for (std::int32_t i = 0; i < block->count; ++i) {
            passOut(keyCheckOut, block->entries()[i].key);
            passOut(valueCheckOut, block->entries()[i].value);
        }
        std::free(block);
    }
    cachedBucket = -1;
    cachedIndex = -1;
    if (aside && entryCount == 0) {
        aside->clear();
        texts = std::move(aside);
    }
}

void KazHashTable::freeExtra() {
    const Guard guard(*this);
    for (std::int32_t bucket = 0; bucket < bucketSlots(); ++bucket) {
        KazBucket* block = buckets[bucket];
        if (!block || tightCapacity(block->count) >= block->capacity)
            continue;
        const std::int64_t capacity = tightCapacity(block->count);
        // Not through the allocation helper: nobody needs to hear of a failed shrink.
        auto* shrunk = static_cast<KazBucket*>(std::realloc(block, blockBytes(capacity)));
        if (!shrunk)
            continue;
        shrunk->capacity = static_cast<std::int32_t>(capacity);
        buckets[bucket] = shrunk;
    }
}

void** KazHashTable::getBucketData(int bucket) const {
    if (bucket < 0 || bucket >= bucketSlots())
        return nullptr;
    const Guard guard(*this);
    if (unsortedCount > 0)
        putInOrder(bucket);
    KazBucket* block = buckets[bucket];
    return block ? &block->entries()->key : nullptr;
}

unsigned KazHashTable::hashPointer(const void* key) {
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(key));
}

int KazHashTable::comparePointers(const void* a, const void* b) {
    const auto first = reinterpret_cast<std::intptr_t>(a);
    const auto second = reinterpret_cast<std::intptr_t>(b);
    if (first == second)
        return 0;
    const auto difference = static_cast<std::intptr_t>(static_cast<std::uintptr_t>(first) -
                                                       static_cast<std::uintptr_t>(second));
    const bool overflows = (difference < 0) != (first < second);
    if (!overflows && difference >= std::numeric_limits<int>::min() &&
        difference <= std::numeric_limits<int>::max())
        return static_cast<int>(difference);
    return first < second ? -1 : 1;
}
