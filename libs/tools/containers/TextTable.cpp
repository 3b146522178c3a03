// SPDX-License-Identifier: Apache-2.0
// Three states. Active: the index has each key of the table, and a bucket's first `sorted_`
// entries are in order, with the newer ones behind them in any. Dozing and resting: the index is
// empty and every bucket is in order, as the search without an index needs it; only a doze ends
// before the table is cleared. Every way out of the active state goes through sleep(), which puts
// the buckets in order first.
//
// What a look at all keys costs is not spent at once but saved up by those who go the long way:
// a table that is often asked is looked at soon, and one that hardly is, hardly ever.
#include "tools/containers/detail/TextTable.h"

#include "tools/app/exceptions/KazMemoryException.h"
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

/// To take down the rules of case takes the time of so many searches.
constexpr std::int32_t searchesForRules = 32;

} // namespace

TextTable::TextTable(KazBucket** buckets, std::int32_t count, bool caseCounts)
    : buckets_(buckets),
      bucketCount_(count),
      rules_(caseCounts ? nullptr : new CaseRules),
      keys_(static_cast<std::size_t>(std::min(count, mostExpected)), CaseFold(rules_.get())),
      sorted_(static_cast<std::int32_t*>(
          allocateZeroed(static_cast<std::size_t>(count) * sizeof(std::int32_t)))) {
    wake();
}

bool TextTable::pay(std::int32_t cost) {
    if (isActive() && !hasItsRules())
        sleep(State::dozing);
    if (state_ == State::resting || !isDue(std::min(cost, 1 << 20)))
        return false;
    paid_ = 0;
    // First the count, as another thread may write meanwhile.
    seenWrites_ = sharedTextWrites.load(std::memory_order_relaxed);
    if (state_ == State::dozing)
        return wakeFromDoze();
    if (!keys_.isUpToDate())
        rest();
    return false;
}

bool TextTable::isDue(std::int32_t cost) {
    // The cost is limited by the caller, so that the sum stays far from the end of an int.
    paid_ += cost;
    if (state_ == State::active)
        return static_cast<std::size_t>(paid_) * keysForSearch >= keys_.size();
    // The table may have grown meanwhile: as many searches again, then.
    return paid_ >= searchesForRules && paid_ >= dozingKeys_ / static_cast<int>(keysForSearch);
}

/// Without memory for the index it dozes on.
bool TextTable::wakeFromDoze() {
    dozingKeys_ = entryCount();
    if (!rules_->note() || !isEachInPlace())
        return false;
    try {
        keys_.reserve(static_cast<std::size_t>(dozingKeys_));
    } catch (const KazMemoryException&) {
        return false;
    }
    indexAll();
    state_ = State::active;
    return true;
}

/// Whether a search in order would find each key.
bool TextTable::isEachInPlace() const {
    for (std::int32_t bucket = 0; bucket < bucketCount_; ++bucket) {
        KazBucket* block = buckets_[bucket];
        for (std::int32_t i = 0; block != nullptr && i < block->count; ++i) {
            // Both must hold by today's rules: the bucket that the hash names, and an ascending
            // order in it.
            const void* key = block->entries()[i].key;
            const unsigned hash = KazString::hashNoCaseDisguised(key);
            const bool isHome =
                hash % static_cast<unsigned>(bucketCount_) == static_cast<unsigned>(bucket);
            if (!isHome || (i > 0 && rules_->compare(block->entries()[i - 1].key, key) >= 0))
                return false;
        }
    }
    return true;
}

void TextTable::indexAll() {
    for (std::int32_t bucket = 0; bucket < bucketCount_; ++bucket) {
        KazBucket* block = buckets_[bucket];
        sorted_.get()[bucket] = block != nullptr ? block->count : 0;
        for (std::int32_t i = 0; i < sorted_.get()[bucket]; ++i) {
            const KazBucketEntry& entry = block->entries()[i];
            const Index::Probe probe = keys_.probe(static_cast<const void*>(entry.key));
            keys_.add(entry.key, entry.value, probe.length(), keys_.hashOf(probe));
        }
    }
}

std::int32_t TextTable::entryCount() const {
    std::int32_t count = 0;
    for (std::int32_t bucket = 0; bucket < bucketCount_; ++bucket)
        count += buckets_[bucket] != nullptr ? buckets_[bucket]->count : 0;
    return count;
}

TextTable::Slot* TextTable::slotOf(const void* key) {
    Slot* slot = isActive() ? keys_.slotOf(key) : nullptr;
    if (slot == nullptr && isActive())
        rest();
    return slot;
}

/// The tails belong where the rules of their time put them.
KeyOrder TextTable::order() const {
    if (!rules_)
        return {KazString::compareDisguised};
    return {KazString::compareNoCaseDisguised, rules_->areCurrent() ? nullptr : rules_.get()};
}

void TextTable::putInOrder(std::int32_t bucket) {
    KazBucket* block = buckets_[bucket];
    std::int32_t& inOrder = sorted_.get()[bucket];
    if (!isActive() || block == nullptr || inOrder == block->count)
        return;
    const std::int32_t late = block->count - inOrder;
    sortTail(*block, inOrder, order());
    inOrder = block->count;
    // What an iterator without the lock waits for.
    unsortedCount_.store(unsorted() - late, std::memory_order_release);
}

void TextTable::putAllInOrder() {
    for (std::int32_t bucket = 0; !isInOrder() && bucket < bucketCount_; ++bucket)
        putInOrder(bucket);
}

void TextTable::noteLast(std::int32_t bucket) {
    if (buckets_[bucket]->count == 1)
        sorted_.get()[bucket] = 1;
    else // changed under the lock only
        unsortedCount_.store(unsorted() + 1, std::memory_order_relaxed);
}

void TextTable::sleep(State how) {
    putAllInOrder();
    dozingKeys_ = static_cast<std::int32_t>(keys_.size());
    state_ = how;
    keys_.clear();
    paid_ = 0;
}

void TextTable::wake() {
    std::fill_n(sorted_.get(), bucketCount_, 0);
    unsortedCount_.store(0, std::memory_order_relaxed);
    keys_.clear();
    paid_ = 0;
    dozingKeys_ = 0;
    seenWrites_ = sharedTextWrites.load(std::memory_order_relaxed);
    state_ = !rules_ || rules_->areCurrent() || rules_->note() ? State::active : State::dozing;
}

} // namespace kaz::detail
