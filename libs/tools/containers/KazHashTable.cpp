// SPDX-License-Identifier: Apache-2.0
#include "tools/containers/KazHashTable.h"

#include "tools/containers/detail/HeldTable.h"
#include "tools/containers/detail/held_item.h"
#include "tools/platform/processor/vector.h"
#include "tools/strings/KazString.h"
#include "tools/util/detail/heap_ptr.h"

#include <algorithm>
#include <limits>
#include <utility>

// The table proper is its lock and what element functions see; buckets.h keeps the
// blocks, TextTable.h the second way to keys that are texts.
//
// An element function may do anything to the table that calls it. So whoever has
// called one looks where its entry is now (findAgain, Departures), and what is being
// checked out is out of reach: null in its place, and its key no longer compared.
//
// With the string class's functions nobody can tell the calls of the comparator, and
// with its element functions not even when those are called: such tables take the
// short ways. With any other functions every call is part of the contract.

using kaz::detail::Departure;
using kaz::detail::Departures;
using kaz::detail::HeldItem;
using kaz::detail::searchEntries;

namespace {

using CheckIn = KazHashTable::CheckIn;
using CheckOut = KazHashTable::CheckOut;

/// Moving so many entries takes as long as a search.
constexpr std::int32_t movesForSearch = 64;

void passOut(CheckOut function, void* item) {
    if (function == KazString::checkOut)
        KazString::checkOut(item); // inline
    else if (function)
        function(item);
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

/// Which entries of a bucket no search may meet.
struct KazHashTable::Held::Holes {
    const Departures& departures;
    std::int32_t bucket;
    std::int32_t endOfHole(std::int32_t index) const {
        return departures.areNone() ? index : departures.endOfHole(bucket, index);
    }
};

/// A block without entries, which only an insertion may have, goes again when that
/// comes to nothing.
class KazHashTable::Held::EmptyBlock {
public:
    explicit EmptyBlock(KazBucket*& kept) : block(kept) {}
    EmptyBlock(const EmptyBlock&) = delete;
    EmptyBlock& operator=(const EmptyBlock&) = delete;
    ~EmptyBlock() {
        if (block && block->count == 0)
            std::free(std::exchange(block, nullptr));
    }

private:
    KazBucket*& block;
};

// ---- Making, and what takes the lock

KazHashTable::KazHashTable(Compare compare, Hash hash, int size)
    : bucketCount(size), hash(hash), compare(compare), hidden(new Hidden(std::max(size, 1))) {
    const auto bytes = static_cast<std::size_t>(hidden->bucketSlots) * sizeof(KazBucket*);
    kaz::detail::HeapPtr<KazBucket*> block(
        static_cast<KazBucket**>(kaz::detail::allocateZeroed(bytes)));
    const bool caseCounts = compare == KazString::compareDisguised;
    if ((caseCounts && hash == KazString::hashDisguised) ||
        (compare == KazString::compareNoCaseDisguised && hash == KazString::hashNoCaseDisguised))
        hidden->texts.emplace(block.get(), hidden->bucketSlots, caseCounts);
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

bool KazHashTable::bind(void* key, void* value, bool replace) {
    return Held(*this).bind(key, Held::unknownLength, value, replace);
}

bool KazHashTable::rebind(void* key, void* value) {
    return Held(*this).rebind(key, value);
}

bool KazHashTable::unbind(const void* key) {
    return Held(*this).unbind(key);
}

void* KazHashTable::valueOf(const void* key) {
    bool found = false;
    return valueOf(key, found);
}

void* KazHashTable::valueOf(const void* key, bool& found) {
    return Held(*this).lookUp(key, Held::unknownLength, found);
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
    Held(*this).clear();
}

void KazHashTable::freeExtra() {
    const Guard guard(*this);
    std::for_each_n(buckets, hidden->bucketSlots, kaz::detail::giveBackRoom);
}

void** KazHashTable::getBucketData(int bucket) const {
    if (bucket < 0 || bucket >= hidden->bucketSlots)
        return nullptr;
    const Guard guard(*this);
    KazBucket* block = buckets[bucket];
    if (!block || block->count == 0)
        return nullptr;
    if (hidden->texts)
        hidden->texts->rest();
    return &block->entries()->key;
}

// ---- Finding

KazBucketEntry& KazHashTable::Held::entryAt(const Position& position) const {
    return table.buckets[position.bucket]->entries()[position.index];
}

void KazHashTable::Held::remember(const Position& position) {
    table.cachedBucket = position.bucket;
    table.cachedIndex = position.index;
}

std::int32_t KazHashTable::Held::bucketOf(const void* key) const {
    return table.bucketCount <= 1 ? 0 : bucketOfHash(table.hash(key));
}

std::int32_t KazHashTable::Held::bucketOfHash(unsigned hashed) const {
    return static_cast<std::int32_t>(hashed % static_cast<std::uint32_t>(table.bucketCount));
}

/// @p act with the key as the index looks for it; @p length is below 0, or the key's.
template <typename Act>
auto KazHashTable::Held::withProbe(const void* key, std::int32_t length, Act act) const {
    using kaz::detail::TextProbe;
    const auto* const text = static_cast<const char*>(key);
    if (texts->caseCounts())
        return act(length < 0 ? TextProbe(key) : TextProbe(text, length));
    return act(length < 0 ? texts->index().probe(key) : texts->index().probe(text, length));
}

void KazHashTable::Held::payForSearch(std::int32_t cost) {
    // Asleep it is not woken by keys that are being checked out.
    if ((texts->isActive() || !isEmptying()) && texts->pay(cost))
        ++hidden.revision;
}

/// What KazString::hashDisguised would say, without measuring the text again.
template <typename Text>
std::int32_t KazHashTable::Held::bucketOfText(const Text& probe) const {
    if (table.bucketCount <= 1 || table.hash != KazString::hashDisguised)
        return bucketOf(probe.text());
    return bucketOfHash(kaz::host::bytes().hash(probe.text(), probe.length()));
}

/// Where the key is, or where it would be inserted.
KazHashTable::Held::Position KazHashTable::Held::findKey(const void* key) {
    if (texts && !texts->isTrusted())
        payForSearch(1);
    return goesByIndex() ? findText(key) : findInOrder(key);
}

/// By the index. A key that is new comes last, in whatever order.
KazHashTable::Held::Position KazHashTable::Held::findText(const void* key) {
    const std::int32_t bucket = bucketOf(key);
    Slot* slot = texts->index().find(texts->index().probe(key));
    const KazBucket* block = table.buckets[bucket];
    if (!slot)
        return {bucket, block ? block->count : 0, false, false};
    texts->putInOrder(bucket);
    const auto [index, found] =
        searchEntries(table.buckets[bucket], key, table.compare, Holes{hidden.departures, bucket});
    const Position position{bucket, index, found, true, slot};
    if (found && entryAt(position).key == slot->key)
        return position;
    // The owner of a key has changed it, whatever was agreed.
    texts->rest();
    return {bucket, index, found};
}

/// As the contract tells it, call by call. The index goes along.
KazHashTable::Held::Position KazHashTable::Held::findInOrder(const void* key) {
    const Position cached{table.cachedBucket, table.cachedIndex, true};
    if (cached.index >= 0) {
        if (texts)
            texts->putInOrder(cached.bucket);
        if (table.compare(key, entryAt(cached).key) == 0)
            return withSlot(cached);
    }
    const std::int32_t bucket = bucketOf(key);
    if (texts)
        texts->putInOrder(bucket);
    const auto [index, found] =
        searchEntries(table.buckets[bucket], key, table.compare, Holes{hidden.departures, bucket});
    return withSlot({bucket, index, found});
}

KazHashTable::Held::Position KazHashTable::Held::withSlot(Position position) {
    if (texts && position.found)
        position.slot = texts->slotOf(entryAt(position).key);
    return position;
}

/// The position after element functions have been called: the one found before,
/// unless they have changed the table or how it finds.
KazHashTable::Held::Position KazHashTable::Held::findAgain(const void* key, const Position& before,
                                                           std::uint32_t revisionBefore) {
    const bool isSame = hidden.revision == revisionBefore && (before.isInOrder || goesByIndex()) &&
                        (!before.slot || texts->isActive());
    return isSame ? before : findKey(key);
}

void* KazHashTable::Held::lookUp(const void* key, std::int32_t length, bool& found) {
    if (!goesByIndex())
        return lookUpInOrder(key, found);
    const Slot* slot =
        withProbe(key, length, [this](const auto& probe) { return texts->index().find(probe); });
    found = slot != nullptr;
    return found ? slot->value : nullptr;
}

void* KazHashTable::Held::lookUpInOrder(const void* key, bool& found) {
    if (const Departure* own = hidden.departures.ofKey(key)) {
        found = true;
        return table.buckets[own->bucket]->entries()[own->end - 1].value;
    }
    const Position position = findKey(key);
    found = position.found;
    if (!found)
        return nullptr;
    remember(position);
    return entryAt(position).value;
}

// ---- Binding

bool KazHashTable::Held::bind(void* key, std::int32_t length, void* value, bool replace) {
    if (texts && !table.keyCheckIn)
        texts->rest();
    if (goesByIndex() && keepsText(table.keyCheckIn) && keepsText(table.valueCheckIn) &&
        withProbe(key, length, [&](const auto& probe) { return appendIfNew(key, value, probe); }))
        return true;
    const Position position = findKey(key);
    if (position.found)
        return replace && replaceValue(key, position, value);
    return bindNew(position, key, value, replace);
}

/// What may fail for want of memory comes first, then both check-ins, then the entry.
bool KazHashTable::Held::bindNew(Position position, void* key, void* value, bool replace) {
    makeRoom(position.bucket);
    const EmptyBlock block(table.buckets[position.bucket]);
    const std::uint32_t revisionBefore = hidden.revision;
    HeldItem newKey(table.keyCheckIn, table.keyCheckOut, key);
    HeldItem newValue(table.valueCheckIn, table.valueCheckOut, value);
    position = findAgain(key, position, revisionBefore);
    if (position.found && !replace)
        return false;
    if (position.found) {
        void* old = exchangeValue(position, newValue.surrender());
        remember(position);
        passOut(table.valueCheckOut, old);
        return true;
    }
    makeRoom(position.bucket);
    insert(position, newKey.surrender(), newValue.surrender());
    return true;
}

/// For one entry more, in its bucket and in the index.
void KazHashTable::Held::makeRoom(std::int32_t bucket) {
    if (texts && texts->isActive()) {
        ++hidden.revision; // slots move
        texts->index().reserve();
    }
    kaz::detail::makeRoom(table.buckets[bucket]);
}

void KazHashTable::Held::insert(const Position& position, void* key, void* value) {
    KazBucket& block = *table.buckets[position.bucket];
    const std::int32_t moved = block.count - position.index;
    kaz::detail::insertEntry(block, position.index, {key, value});
    hidden.departures.inserted(position.bucket, position.index);
    ++table.entryCount;
    ++hidden.revision;
    remember(position);
    if (!texts || !texts->isActive())
        return;
    const Probe probe = texts->index().probe(static_cast<const void*>(key));
    texts->index().add(key, value, probe.length(), texts->index().hashOf(probe));
    if (position.isInOrder)
        texts->noteInOrder(position.bucket, 1);
    else
        texts->noteLast(position.bucket);
    if (!texts->isTrusted())
        payForSearch(moved / movesForSearch);
}

/// insert for a text, unless the index has it, and element functions that cannot be
/// told from no call: most of what fills a table, in half the time.
template <typename Text>
bool KazHashTable::Held::appendIfNew(void* key, void* value, const Text& probe) {
    const std::uint32_t textHash = texts->index().hashOf(probe);
    if (texts->index().find(probe, textHash))
        return false;
    const std::int32_t bucket = bucketOfText(probe);
    makeRoom(bucket);
    if (table.keyCheckIn)
        KazString::checkIn(key);
    if (table.valueCheckIn)
        KazString::checkIn(value);
    KazBucket& block = *table.buckets[bucket];
    const std::int32_t index = block.count++;
    block.entries()[index] = {key, value};
    ++table.entryCount;
    remember({bucket, index, true});
    texts->index().add(key, value, probe.length(), textHash);
    texts->noteLast(bucket);
    return true;
}

// ---- Replacing

bool KazHashTable::Held::rebind(const void* key, void* value) {
    const Position position = findKey(key);
    return position.found && replaceValue(key, position, value);
}

void* KazHashTable::Held::exchangeValue(const Position& position, void* value) {
    if (position.slot)
        position.slot->value = value;
    return std::exchange(entryAt(position).value, value);
}

/// A value that is null because an outer call has it checked out is not one.
void KazHashTable::Held::checkOutValue(const Position& position) {
    const bool isOut = hidden.departures.find(position.bucket, position.index) != nullptr;
    void* value = exchangeValue(position, nullptr);
    if (value || !isOut)
        passOut(table.valueCheckOut, value);
}

/// False when an element function has unbound the key meanwhile.
bool KazHashTable::Held::replaceValue(const void* key, Position position, void* value) {
    const std::uint32_t revisionBefore = hidden.revision;
    remember(position);
    checkOutValue(position);
    HeldItem newValue(table.valueCheckIn, table.valueCheckOut, value);
    position = findAgain(key, position, revisionBefore);
    if (!position.found)
        return false;
    void* met = exchangeValue(position, newValue.surrender());
    remember(position);
    if (met)
        passOut(table.valueCheckOut, met); // an element function has put it there
    return true;
}

// ---- Removing

bool KazHashTable::Held::unbind(const void* key) {
    const Position position = findKey(key);
    if (!position.found)
        return false;
    if (isEmptying() || !isSilent(table.valueCheckOut) || !isSilent(table.keyCheckOut)) {
        checkOutEntry(position);
        return true;
    }
    const KazBucketEntry entry = entryAt(position);
    extract(position);
    passOut(table.valueCheckOut, entry.value);
    passOut(table.keyCheckOut, entry.key);
    return true;
}

/// Checks value and key out where they stand, then takes the entry out.
void KazHashTable::Held::checkOutEntry(Position position) {
    Departures::Entry going(hidden.departures, position.bucket, position.index);
    checkOutValue(position);
    if (going.isGone())
        return;
    position = {going.bucket, going.begin, true};
    void* const key = entryAt(position).key;
    if (texts && texts->isActive()) {
        if (const Slot* slot = texts->slotOf(key))
            texts->index().remove(slot);
    }
    going.isHole = true;
    table.cachedIndex = -1;
    // An element function may have bound the key anew while that could be done.
    if (void* met = exchangeValue(position, nullptr))
        passOut(table.valueCheckOut, met);
    if (!going.isGone()) {
        entryAt({going.bucket, going.begin, true}).key = nullptr;
        going.key = key;
    }
    passOut(table.keyCheckOut, key);
    if (!going.isGone())
        extract({going.bucket, going.begin, true});
}

void KazHashTable::Held::extract(const Position& position) {
    if (position.slot)
        texts->index().remove(position.slot);
    if (texts)
        texts->noteInOrder(position.bucket, -1);
    kaz::detail::removeEntry(table.buckets[position.bucket], position.index);
    hidden.departures.removed(position.bucket, position.index);
    --table.entryCount;
    ++hidden.revision;
    table.cachedIndex = -1;
}

void KazHashTable::Held::clear() {
    const bool isObserved =
        isEmptying() || !isSilent(table.keyCheckOut) || !isSilent(table.valueCheckOut);
    // Meanwhile the table goes by its buckets: what check-outs bind is sorted in.
    if (texts && isObserved)
        texts->rest();
    std::int32_t removed = 0;
    for (std::int32_t bucket = 0; bucket < hidden.bucketSlots; ++bucket) {
        if (table.buckets[bucket])
            removed += isObserved ? clearBucket(bucket) : dropBucket(bucket);
    }
    table.entryCount -= removed;
    table.cachedBucket = -1;
    table.cachedIndex = -1;
    if (texts && table.entryCount == 0 && !isEmptying())
        texts->wake();
}

/// Checks out what is in the bucket, with nobody looking, and drops its block; how many
/// entries it had.
std::int32_t KazHashTable::Held::dropBucket(std::int32_t bucket) {
    KazBucket* const block = std::exchange(table.buckets[bucket], nullptr);
    const std::int32_t count = block->count;
    std::for_each_n(block->entries(), count, [this](const KazBucketEntry& entry) {
        passOut(table.keyCheckOut, entry.key);
        passOut(table.valueCheckOut, entry.value);
    });
    std::free(block);
    ++hidden.revision;
    return count;
}

/// The same before the eyes of element functions, which may change the table.
std::int32_t KazHashTable::Held::clearBucket(std::int32_t bucket) {
    KazBucket*& block = table.buckets[bucket];
    Departures::Entry going(hidden.departures, bucket, 0, 0);
    going.isHole = true;
    while (!going.isGone() && going.end < block->count) {
        const Departure* outer = hidden.departures.find(bucket, going.end);
        KazBucketEntry& entry = block->entries()[going.end++];
        if (outer && outer->isHole)
            continue;
        table.cachedIndex = -1;
        void* const value = entry.value;
        void* const key = std::exchange(entry.key, nullptr);
        going.key = key;
        passOut(table.keyCheckOut, key);
        going.key = nullptr;
        if (!going.isGone())
            block->entries()[going.end - 1].value = nullptr;
        if (value || !outer)
            passOut(table.valueCheckOut, value);
    }
    if (going.isGone())
        return 0;
    const std::int32_t count = block->count;
    std::free(std::exchange(block, nullptr));
    hidden.departures.removedAll(bucket);
    ++hidden.revision;
    return count;
}

// ---- Pointers as keys

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
