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
    else if (function != nullptr)
        function(item);
}

// The library's own copies of two inline functions are known here, so the string map
// is served; with a program's copies, everything goes the general way.

/// Whether @p function can be called without anybody noticing when.
bool isSilent(CheckOut function) {
    return function == nullptr || function == KazString::checkOut;
}

/// Whether @p function leaves every text as it is.
bool keepsText(CheckIn function) {
    return function == nullptr || function == KazString::checkIn;
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
    explicit EmptyBlock(KazBucket*& kept) : block_(kept) {}
    EmptyBlock(const EmptyBlock&) = delete;
    EmptyBlock& operator=(const EmptyBlock&) = delete;
    ~EmptyBlock() {
        if (block_ != nullptr && block_->count == 0)
            std::free(std::exchange(block_, nullptr));
    }

private:
    KazBucket*& block_;
};

// ---- Making, and what takes the lock

KazHashTable::KazHashTable(Compare compare, Hash hash, int size)
    : bucketCount_(size), hash_(hash), compare_(compare), hidden_(new Hidden(std::max(size, 1))) {
    const auto bytes = static_cast<std::size_t>(hidden_->bucketSlots) * sizeof(KazBucket*);
    kaz::detail::HeapPtr<KazBucket*> block(
        static_cast<KazBucket**>(kaz::detail::allocateZeroed(bytes)));
    const bool caseCounts = compare == KazString::compareDisguised;
    if ((caseCounts && hash == KazString::hashDisguised) ||
        (compare == KazString::compareNoCaseDisguised && hash == KazString::hashNoCaseDisguised))
        hidden_->texts.emplace(block.get(), hidden_->bucketSlots, caseCounts);
    buckets_ = block.release();
}

KazHashTable::~KazHashTable() {
    // More than once, should a check-out bind something.
    while (entryCount_ > 0)
        clear();
    std::free(buckets_);
}

void KazHashTable::setKeyCheckIn(CheckIn function) {
    const Guard guard(*this);
    keyCheckIn_ = function;
}

void KazHashTable::setKeyCheckOut(CheckOut function) {
    const Guard guard(*this);
    keyCheckOut_ = function;
}

void KazHashTable::setValueCheckIn(CheckIn function) {
    const Guard guard(*this);
    valueCheckIn_ = function;
}

void KazHashTable::setValueCheckOut(CheckOut function) {
    const Guard guard(*this);
    valueCheckOut_ = function;
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
    return entryCount_;
}

void KazHashTable::clear() {
    Held(*this).clear();
}

void KazHashTable::freeExtra() {
    const Guard guard(*this);
    std::for_each_n(buckets_, hidden_->bucketSlots, kaz::detail::giveBackRoom);
}

void** KazHashTable::getBucketData(int bucket) const {
    if (bucket < 0 || bucket >= hidden_->bucketSlots)
        return nullptr;
    const Guard guard(*this);
    KazBucket* block = buckets_[bucket];
    if (block == nullptr || block->count == 0)
        return nullptr;
    if (hidden_->texts)
        hidden_->texts->rest();
    return &block->entries()->key;
}

// ---- Finding

KazBucketEntry& KazHashTable::Held::entryAt(const Position& position) const {
    return table_.buckets_[position.bucket]->entries()[position.index];
}

void KazHashTable::Held::remember(const Position& position) {
    table_.cachedBucket_ = position.bucket;
    table_.cachedIndex_ = position.index;
}

std::int32_t KazHashTable::Held::bucketOf(const void* key) const {
    return table_.bucketCount_ <= 1 ? 0 : bucketOfHash(table_.hash_(key));
}

std::int32_t KazHashTable::Held::bucketOfHash(unsigned hashed) const {
    return static_cast<std::int32_t>(hashed % static_cast<std::uint32_t>(table_.bucketCount_));
}

/// @p act with the key as the index looks for it; @p length is below 0, or the key's.
template <typename Act>
auto KazHashTable::Held::withProbe(const void* key, std::int32_t length, Act act) const {
    using kaz::detail::TextProbe;
    const auto* const text = static_cast<const char*>(key);
    if (texts_->caseCounts())
        return act(length < 0 ? TextProbe(key) : TextProbe(text, length));
    return act(length < 0 ? texts_->index().probe(key) : texts_->index().probe(text, length));
}

void KazHashTable::Held::payForSearch(std::int32_t cost) {
    // Asleep it is not woken by keys that are being checked out.
    if ((texts_->isActive() || !isEmptying()) && texts_->pay(cost))
        ++hidden_.revision;
}

/// What KazString::hashDisguised would say, without measuring the text again.
template <typename Text>
std::int32_t KazHashTable::Held::bucketOfText(const Text& probe) const {
    if (table_.bucketCount_ <= 1 || table_.hash_ != KazString::hashDisguised)
        return bucketOf(probe.text());
    return bucketOfHash(kaz::host::bytes().hash(probe.text(), probe.length()));
}

/// Where the key is, or where it would be inserted.
KazHashTable::Held::Position KazHashTable::Held::findKey(const void* key) {
    if (texts_ && !texts_->isTrusted())
        payForSearch(1);
    return goesByIndex() ? findText(key) : findInOrder(key);
}

/// By the index. A key that is new comes last, in whatever order.
KazHashTable::Held::Position KazHashTable::Held::findText(const void* key) {
    const std::int32_t bucket = bucketOf(key);
    Slot* slot = texts_->index().find(texts_->index().probe(key));
    const KazBucket* block = table_.buckets_[bucket];
    if (slot == nullptr)
        return {bucket, block != nullptr ? block->count : 0, false, false};
    texts_->putInOrder(bucket);
    const auto [index, found] = searchEntries(table_.buckets_[bucket], key, table_.compare_,
                                              Holes{hidden_.departures, bucket});
    const Position position{bucket, index, found, true, slot};
    if (found && entryAt(position).key == slot->key)
        return position;
    // The owner of a key has changed it, whatever was agreed.
    texts_->rest();
    return {bucket, index, found};
}

/// As the contract tells it, call by call. The index goes along.
KazHashTable::Held::Position KazHashTable::Held::findInOrder(const void* key) {
    const Position cached{table_.cachedBucket_, table_.cachedIndex_, true};
    if (cached.index >= 0) {
        if (texts_)
            texts_->putInOrder(cached.bucket);
        if (table_.compare_(key, entryAt(cached).key) == 0)
            return withSlot(cached);
    }
    const std::int32_t bucket = bucketOf(key);
    if (texts_)
        texts_->putInOrder(bucket);
    const auto [index, found] = searchEntries(table_.buckets_[bucket], key, table_.compare_,
                                              Holes{hidden_.departures, bucket});
    return withSlot({bucket, index, found});
}

KazHashTable::Held::Position KazHashTable::Held::withSlot(Position position) {
    if (texts_ && position.found)
        position.slot = texts_->slotOf(entryAt(position).key);
    return position;
}

/// The position after element functions have been called: the one found before,
/// unless they have changed the table or how it finds.
KazHashTable::Held::Position KazHashTable::Held::findAgain(const void* key, const Position& before,
                                                           std::uint32_t revisionBefore) {
    const bool isSame = hidden_.revision == revisionBefore && (before.isInOrder || goesByIndex()) &&
                        (before.slot == nullptr || texts_->isActive());
    return isSame ? before : findKey(key);
}

void* KazHashTable::Held::lookUp(const void* key, std::int32_t length, bool& found) {
    if (!goesByIndex())
        return lookUpInOrder(key, found);
    const Slot* slot =
        withProbe(key, length, [this](const auto& probe) { return texts_->index().find(probe); });
    found = slot != nullptr;
    return found ? slot->value : nullptr;
}

void* KazHashTable::Held::lookUpInOrder(const void* key, bool& found) {
    // An element function asks for the very key that is being checked out: the entry still stands
    // where it did, though no search meets it.
    if (const Departure* own = hidden_.departures.ofKey(key)) {
        found = true;
        return table_.buckets_[own->bucket]->entries()[own->end - 1].value;
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
    // Without a check-in the key stays the caller's, who may change its text behind the index.
    if (texts_ && table_.keyCheckIn_ == nullptr)
        texts_->rest();
    if (goesByIndex() && keepsText(table_.keyCheckIn_) && keepsText(table_.valueCheckIn_) &&
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
    const EmptyBlock block(table_.buckets_[position.bucket]);
    const std::uint32_t revisionBefore = hidden_.revision;
    HeldItem newKey(table_.keyCheckIn_, table_.keyCheckOut_, key);
    HeldItem newValue(table_.valueCheckIn_, table_.valueCheckOut_, value);
    position = findAgain(key, position, revisionBefore);
    if (position.found && !replace)
        return false;
    if (position.found) {
        void* old = exchangeValue(position, newValue.surrender());
        remember(position);
        passOut(table_.valueCheckOut_, old);
        return true;
    }
    makeRoom(position.bucket);
    insert(position, newKey.surrender(), newValue.surrender());
    return true;
}

/// For one entry more, in its bucket and in the index.
void KazHashTable::Held::makeRoom(std::int32_t bucket) {
    if (texts_ && texts_->isActive()) {
        ++hidden_.revision; // slots move
        texts_->index().reserve();
    }
    kaz::detail::makeRoom(table_.buckets_[bucket]);
}

void KazHashTable::Held::insert(const Position& position, void* key, void* value) {
    KazBucket& block = *table_.buckets_[position.bucket];
    const std::int32_t moved = block.count - position.index;
    kaz::detail::insertEntry(block, position.index, {key, value});
    hidden_.departures.inserted(position.bucket, position.index);
    ++table_.entryCount_;
    ++hidden_.revision;
    remember(position);
    if (!texts_ || !texts_->isActive())
        return;
    const Probe probe = texts_->index().probe(static_cast<const void*>(key));
    texts_->index().add(key, value, probe.length(), texts_->index().hashOf(probe));
    if (position.isInOrder)
        texts_->noteInOrder(position.bucket, 1);
    else
        texts_->noteLast(position.bucket);
    if (!texts_->isTrusted())
        payForSearch(moved / movesForSearch);
}

/// insert for a text, unless the index has it, and element functions that cannot be
/// told from no call: most of what fills a table, in half the time.
template <typename Text>
bool KazHashTable::Held::appendIfNew(void* key, void* value, const Text& probe) {
    const std::uint32_t textHash = texts_->index().hashOf(probe);
    if (texts_->index().find(probe, textHash))
        return false;
    const std::int32_t bucket = bucketOfText(probe);
    makeRoom(bucket);
    if (table_.keyCheckIn_)
        KazString::checkIn(key);
    if (table_.valueCheckIn_)
        KazString::checkIn(value);
    KazBucket& block = *table_.buckets_[bucket];
    const std::int32_t index = block.count++;
    block.entries()[index] = {key, value};
    ++table_.entryCount_;
    remember({bucket, index, true});
    texts_->index().add(key, value, probe.length(), textHash);
    texts_->noteLast(bucket);
    return true;
}

// ---- Replacing

bool KazHashTable::Held::rebind(const void* key, void* value) {
    const Position position = findKey(key);
    return position.found && replaceValue(key, position, value);
}

void* KazHashTable::Held::exchangeValue(const Position& position, void* value) {
    if (position.slot != nullptr)
        position.slot->value = value;
    return std::exchange(entryAt(position).value, value);
}

/// A value that is null because an outer call has it checked out is not one.
void KazHashTable::Held::checkOutValue(const Position& position) {
    const bool isOut = hidden_.departures.find(position.bucket, position.index) != nullptr;
    void* value = exchangeValue(position, nullptr);
    if (value != nullptr || !isOut)
        passOut(table_.valueCheckOut_, value);
}

/// False when an element function has unbound the key meanwhile.
bool KazHashTable::Held::replaceValue(const void* key, Position position, void* value) {
    const std::uint32_t revisionBefore = hidden_.revision;
    remember(position);
    checkOutValue(position);
    HeldItem newValue(table_.valueCheckIn_, table_.valueCheckOut_, value);
    position = findAgain(key, position, revisionBefore);
    if (!position.found)
        return false;
    void* met = exchangeValue(position, newValue.surrender());
    remember(position);
    if (met != nullptr)
        passOut(table_.valueCheckOut_, met); // an element function has put it there
    return true;
}

// ---- Removing

bool KazHashTable::Held::unbind(const void* key) {
    const Position position = findKey(key);
    if (!position.found)
        return false;
    if (isEmptying() || !isSilent(table_.valueCheckOut_) || !isSilent(table_.keyCheckOut_)) {
        checkOutEntry(position);
        return true;
    }
    const KazBucketEntry entry = entryAt(position);
    extract(position);
    passOut(table_.valueCheckOut_, entry.value);
    passOut(table_.keyCheckOut_, entry.key);
    return true;
}

/// Checks value and key out where they stand, then takes the entry out.
void KazHashTable::Held::checkOutEntry(Position position) {
    Departures::Entry going(hidden_.departures, position.bucket, position.index);
    checkOutValue(position);
    if (going.isGone())
        return;
    position = {going.bucket, going.begin, true};
    void* const key = entryAt(position).key;
    if (texts_ && texts_->isActive()) {
        if (const Slot* slot = texts_->slotOf(key))
            texts_->index().remove(slot);
    }
    going.isHole = true;
    table_.cachedIndex_ = -1;
    // An element function may have bound the key anew while that could be done.
    if (void* met = exchangeValue(position, nullptr))
        passOut(table_.valueCheckOut_, met);
    if (!going.isGone()) {
        entryAt({going.bucket, going.begin, true}).key = nullptr;
        going.key = key;
    }
    passOut(table_.keyCheckOut_, key);
    if (!going.isGone())
        extract({going.bucket, going.begin, true});
}

void KazHashTable::Held::extract(const Position& position) {
    if (position.slot != nullptr)
        texts_->index().remove(position.slot);
    if (texts_)
        texts_->noteInOrder(position.bucket, -1);
    kaz::detail::removeEntry(table_.buckets_[position.bucket], position.index);
    hidden_.departures.removed(position.bucket, position.index);
    --table_.entryCount_;
    ++hidden_.revision;
    table_.cachedIndex_ = -1;
}

void KazHashTable::Held::clear() {
    const bool isObserved =
        isEmptying() || !isSilent(table_.keyCheckOut_) || !isSilent(table_.valueCheckOut_);
    // Meanwhile the table goes by its buckets: what check-outs bind is sorted in.
    if (texts_ && isObserved)
        texts_->rest();
    std::int32_t removed = 0;
    for (std::int32_t bucket = 0; bucket < hidden_.bucketSlots; ++bucket) {
        if (table_.buckets_[bucket] != nullptr)
            removed += isObserved ? clearBucket(bucket) : dropBucket(bucket);
    }
    table_.entryCount_ -= removed;
    table_.cachedBucket_ = -1;
    table_.cachedIndex_ = -1;
    if (texts_ && table_.entryCount_ == 0 && !isEmptying())
        texts_->wake();
}

/// Checks out what is in the bucket, with nobody looking, and drops its block; how many
/// entries it had.
std::int32_t KazHashTable::Held::dropBucket(std::int32_t bucket) {
    KazBucket* const block = std::exchange(table_.buckets_[bucket], nullptr);
    const std::int32_t count = block->count;
    std::for_each_n(block->entries(), count, [this](const KazBucketEntry& entry) {
        passOut(table_.keyCheckOut_, entry.key);
        passOut(table_.valueCheckOut_, entry.value);
    });
    std::free(block);
    ++hidden_.revision;
    return count;
}

/// The same before the eyes of element functions, which may change the table.
std::int32_t KazHashTable::Held::clearBucket(std::int32_t bucket) {
    KazBucket*& block = table_.buckets_[bucket];
    Departures::Entry going(hidden_.departures, bucket, 0, 0);
    going.isHole = true;
    while (!going.isGone() && going.end < block->count) {
        const Departure* outer = hidden_.departures.find(bucket, going.end);
        KazBucketEntry& entry = block->entries()[going.end++];
        if (outer != nullptr && outer->isHole)
            continue;
        table_.cachedIndex_ = -1;
        void* const value = entry.value;
        void* const key = std::exchange(entry.key, nullptr);
        going.key = key;
        passOut(table_.keyCheckOut_, key);
        going.key = nullptr;
        if (!going.isGone())
            block->entries()[going.end - 1].value = nullptr;
        if (value != nullptr || outer == nullptr)
            passOut(table_.valueCheckOut_, value);
    }
    if (going.isGone())
        return 0;
    const std::int32_t count = block->count;
    std::free(std::exchange(block, nullptr));
    hidden_.departures.removedAll(bucket);
    ++hidden_.revision;
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
