// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a hash table does for one who holds its lock, and what it keeps for itself.
#pragma once

#include "tools/containers/KazHashTable.h"
#include "tools/containers/detail/Departures.h"
#include "tools/containers/detail/TextTable.h"
#include "tools/containers/detail/buckets.h"
#include "tools/platform/threads.h"
#include "tools/util/detail/allocate.h"

#include <cstdlib>
#include <optional>

/// What no program sees of a table.
struct KAZ_LOCAL KazHashTable::Hidden {
    explicit Hidden(std::int32_t slots) : bucketSlots(slots) {}

    const std::int32_t bucketSlots; ///< buckets that there are, at least one
    /// Counts insertions and removals, so that a member knows whether an element
    /// function that it called has moved the entries, or slots of the index.
    std::uint32_t revision = 0;
    kaz::detail::Departures departures;
    /// Only where the keys are texts and the functions the string class's own.
    std::optional<kaz::detail::TextTable> texts;

    static void* operator new(std::size_t size) { return kaz::detail::allocate(size); }
    static void operator delete(void* block) { std::free(block); }
};

/// Holds the table's lock while it lives. Never fails.
///
/// A lock of our own, because std::recursive_mutex takes 4.3 ns a turn, a third of
/// a lookup, and this one a fraction of that while there is one thread: then
/// nothing needs to be atomic. What is stored is the same either way, so that
/// a thread that is started meanwhile finds the lock held.
class KAZ_LOCAL KazHashTable::Guard {
public:
    explicit Guard(const KazHashTable& table) : lock_(table.lock_) {
        const std::uintptr_t self = kaz::host::thisThread();
        const std::uintptr_t holder = lock_.holder.load(std::memory_order_relaxed);
        if ((holder & ~waitedFor) == self)
            ++lock_.nested;
        else if (holder == 0 && kaz::host::isOnlyThread())
            lock_.holder.store(self, std::memory_order_relaxed);
        else
            acquire(lock_, self);
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() {
        if (lock_.nested > 0)
            --lock_.nested;
        else if (kaz::host::isOnlyThread())
            lock_.holder.store(0, std::memory_order_relaxed);
        else
            release(lock_);
    }

private:
    /// Stands in the holder's number while somebody waits for the lock, or may do so.
    static constexpr std::uintptr_t waitedFor = 1;

    static void acquire(Lock& lock, std::uintptr_t self);
    static void release(Lock& lock);

    Lock& lock_;
};

/// A table whose lock is held: the search for keys and the protocol of the element
/// functions.
class KAZ_LOCAL KazHashTable::Held {
public:
    /// What is said of the length of a key that may not even be a text.
    static constexpr std::int32_t unknownLength = -1;

    explicit Held(KazHashTable& held)
        : guard_(held), table_(held), hidden_(*held.hidden_), texts_(hidden_.texts) {}

    /// Where a length is given, the key is a text of likely so many characters.
    bool bind(void* key, std::int32_t length, void* value, bool replace);
    bool rebind(const void* key, void* value);
    bool unbind(const void* key);
    void* lookUp(const void* key, std::int32_t length, bool& found);
    void clear();

private:
    using Slot = kaz::detail::TextTable::Slot;
    using Probe = kaz::detail::TextTable::Index::Probe;

    struct Position {
        std::int32_t bucket;
        std::int32_t index;
        bool found;
        /// Whether the bucket is in order up to its end, and the place the key's own.
        bool isInOrder = true;
        /// What the index of the texts has for the key, when there is one.
        Slot* slot = nullptr;
    };
    struct Holes;
    class EmptyBlock;

    bool isEmptying() const { return !hidden_.departures.areNone(); }
    bool goesByIndex() const { return texts_ && texts_->isTrusted() && !isEmptying(); }
    KazBucketEntry& entryAt(const Position& position) const;
    void remember(const Position& position);

    std::int32_t bucketOf(const void* key) const;
    std::int32_t bucketOfHash(unsigned hashed) const;
    template <typename Text>
    std::int32_t bucketOfText(const Text& probe) const;
    template <typename Act>
    auto withProbe(const void* key, std::int32_t length, Act act) const;
    void payForSearch(std::int32_t cost);
    Position findKey(const void* key);
    Position findText(const void* key);
    Position findInOrder(const void* key);
    Position withSlot(Position position);
    Position findAgain(const void* key, const Position& before, std::uint32_t revisionBefore);
    void* lookUpInOrder(const void* key, bool& found);

    void makeRoom(std::int32_t bucket);
    bool bindNew(Position position, void* key, void* value, bool replace);
    template <typename Text>
    bool appendIfNew(void* key, void* value, const Text& probe);
    void insert(const Position& position, void* key, void* value);

    void* exchangeValue(const Position& position, void* value);
    bool replaceValue(const void* key, Position position, void* value);
    void checkOutValue(const Position& position);
    void checkOutEntry(Position position);
    void extract(const Position& position);
    std::int32_t dropBucket(std::int32_t bucket);
    std::int32_t clearBucket(std::int32_t bucket);

    const Guard guard_;
    KazHashTable& table_;
    Hidden& hidden_;
    std::optional<kaz::detail::TextTable>& texts_;
};
