// SPDX-License-Identifier: Apache-2.0
/// @file
/// A second way into a hash table whose keys are texts.
#pragma once

#include "tools/containers/KazHashTable.h"
#include "tools/containers/detail/buckets.h"
#include "tools/strings/detail/shared_writes.h"
#include "tools/util/detail/CaseRules.h"
#include "tools/util/detail/TextIndex.h"
#include "tools/util/detail/heap_ptr.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace kaz::detail {

/// Where the string class's own functions order and hash the keys, nobody can
/// observe how often they are called. So a table goes by an index of its keys'
/// texts, and a bucket gets into order only when somebody may see that: until then
/// new entries are its unsorted tail. 100,000 names in one bucket took 400 ms to bind
/// in shuffled order, and 550 ns to find one, by sorted insertion and binary search.
///
/// At rest it knows nothing: all buckets are in order, and the table is searched as
/// any other. It rests from the time when keys or values may change behind its back
/// (bound without being checked in, or written by whoever asked for a bucket's
/// array, or changed in a block that others hold) until the table is cleared.
///
/// Without regard to case it goes by the rules of case that there were when it woke.
/// While the process has others it dozes, which is to rest but for waking again: when
/// by these, too, each key is where a search would find it.
class TextTable {
public:
    using Index = TextIndex<void*, CaseFold>;
    using Slot = Index::Slot;

    /// For that many buckets, which stay the table's and where they are.
    TextTable(KazBucket** buckets, std::int32_t count, bool caseCounts);

    bool isActive() const { return state_ == State::active; }
    bool caseCounts() const { return !rules_; }

    /// Whether the index alone tells what is bound: no text was changed in a shared
    /// block since it was known to be right, and no rule of case. If one was, only the
    /// search in order finds what it always found, and the index goes along or dozes.
    bool isTrusted() const {
        return isActive() && seenWrites_ == sharedTextWrites.load(std::memory_order_relaxed) &&
               hasItsRules();
    }

    /// Somebody goes the long way, which takes time for @p cost searches. When that
    /// adds up to what looking at all keys takes, does so: the index is right again,
    /// or rests. True when it has woken, so that there are slots where none were.
    bool pay(std::int32_t cost);

    Index& index() { return keys_; }
    const Index& index() const { return keys_; }

    /// What the index has for an entry of the table with this stored key. Null where
    /// it is at rest, as from then on when the key has changed.
    Slot* slotOf(const void* key);

    void putInOrder(std::int32_t bucket);
    void putAllInOrder();
    /// Iterators ask without the lock, and may go on when the answer is yes.
    bool isInOrder() const { return unsortedCount_.load(std::memory_order_acquire) == 0; }
    std::int32_t sortedIn(std::int32_t bucket) const { return sorted_.get()[bucket]; }
    std::int32_t unsorted() const { return unsortedCount_.load(std::memory_order_relaxed); }

    /// An entry has come last in its bucket, whatever its key.
    void noteLast(std::int32_t bucket);
    /// An entry has come to or gone from its place in a bucket that is in order.
    void noteInOrder(std::int32_t bucket, std::int32_t change) { sorted_.get()[bucket] += change; }

    /// Forgets all keys, after putting all in order.
    void rest() { sleep(State::resting); }
    /// The table is empty.
    void wake();

private:
    enum class State { active, dozing, resting };

    bool hasItsRules() const { return !rules_ || rules_->areCurrent(); }
    KeyOrder order() const;
    void sleep(State how);
    bool isDue(std::int32_t cost);
    bool wakeFromDoze();
    bool isEachInPlace() const;
    void indexAll();
    std::int32_t entryCount() const;

    KazBucket** buckets_;
    std::int32_t bucketCount_;
    State state_ = State::active;
    std::int32_t paid_ = 0;
    std::int32_t dozingKeys_ = 0;      ///< when it fell asleep, or last tried to wake
    std::unique_ptr<CaseRules> rules_; ///< null where case counts
    std::uint64_t seenWrites_ = sharedTextWrites.load(std::memory_order_relaxed);
    Index keys_;
    HeapPtr<std::int32_t> sorted_; ///< how many entries of each bucket, from the first
    std::atomic<std::int32_t> unsortedCount_ = 0; ///< in all buckets
};

} // namespace kaz::detail
