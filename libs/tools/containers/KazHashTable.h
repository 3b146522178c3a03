/// @file
/// The library's untyped associative table.
#pragma once

#include "tools/export.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace kaz::detail {
class TextIndex;
class TextProbe;
struct TextSlot;
} // namespace kaz::detail

/// One binding, as a bucket stores it.
struct KazBucketEntry {
    void* key;
    void* value;
};

/// A bucket's block: `count` entries in ascending order of their keys, room
/// for `capacity`, directly behind these two numbers.
struct KazBucket {
    std::int32_t count;
    std::int32_t capacity;

    KazBucketEntry* entries() { return reinterpret_cast<KazBucketEntry*>(this + 1); }
};

/// A table from keys to values, both `void*`. A hash picks the bucket, a
/// binary search finds the key in it; the table never rehashes. It remembers
/// where it found the last key, so that asking twice costs one comparison.
/// With KazString::compareDisguised and hashDisguised and keys that are checked in
/// it finds keys in constant time whatever the number of buckets, and sorts those
/// added since only when their order is looked at.
///
///     KazHashTable table(KazHashTable::comparePointers, KazHashTable::hashPointer, 31);
///     table.bind(key, value, true);
///     void* found = table.valueOf(key);
///
/// Optional element functions let the table own what it stores: check-in is
/// called on what enters, and its result is stored; check-out is called on
/// what leaves. They may use the table themselves: what leaves is out of the
/// table before it is checked out, what enters is in it only after check-in
/// has returned. Check-out must not throw.
///
/// When memory runs out, or check-in throws, the table is unchanged and
/// usable, and what was not checked in is still the caller's; only a value that
/// was being replaced has by then been checked out, and its key is bound to null.
///
/// Every member holds the table's lock for its whole run, calls of element
/// functions included; the lock is recursive. Iterators take no lock: while
/// one is in use the table must not change.
class KAZ_API KazHashTable {
public:
    /// Order of two keys: negative, zero or positive. The first is the one
    /// asked for, the second one stored.
    using Compare = int (*)(const void*, const void*);
    using Hash = unsigned (*)(const void*);
    using CheckIn = void* (*)(void*);
    using CheckOut = void (*)(void*);

    /// @p size is the number of buckets, for good. At 1 or less there is one
    /// bucket, a single sorted list, and @p hash is never called. Without
    /// memory for the buckets: KazMemoryException.
    KazHashTable(Compare compare, Hash hash, int size);
    KazHashTable(const KazHashTable&) = delete;
    KazHashTable& operator=(const KazHashTable&) = delete;
    /// Checks everything out, as clear does.
    virtual ~KazHashTable();

    /// Install an element function, null for none.
    void setKeyCheckIn(CheckIn function);
    void setKeyCheckOut(CheckOut function);
    void setValueCheckIn(CheckIn function);
    void setValueCheckOut(CheckOut function);

    /// Binds @p key to @p value. A key that is bound already gets the new
    /// value when @p replace is true (the old one is checked out first, the
    /// stored key stays); otherwise nothing changes and the result is false.
    bool bind(void* key, void* value, bool replace);

    /// Replaces the value of a bound key; false, and no change, when it is not
    /// bound.
    bool rebind(void* key, void* value);

    /// Removes the key, its value checked out first; false when not bound.
    bool unbind(const void* key);

    /// The stored value, or null when @p key is not bound.
    void* valueOf(const void* key);
    /// The same; @p found tells a bound null from an absent key.
    void* valueOf(const void* key, bool& found);

    bool isBound(const void* key);

    /// The number of keys bound.
    int getSize() const;

    /// Removes everything: for each entry the key is checked out, then the
    /// value.
    void clear();

    /// Gives back room that the buckets do not need at present.
    void freeExtra();

    /// The entries of a bucket as key, value, key, value, ...; null for a
    /// bucket without entries and for one that does not exist. Count and
    /// capacity, 32 bits each, stand directly before them. Good until the
    /// table changes.
    void** getBucketData(int bucket) const;

    /// The pointer's value, and the order of two. Together they key a table by
    /// pointers, or by integers kept in the key's place. The order is the
    /// difference where that fits an int, else its sign alone.
    static unsigned hashPointer(const void* key);
    static int comparePointers(const void* a, const void* b);

private:
    friend class KazHashTableIterator;
    friend class KazStringToStringMap;
    class Guard;

    /// Who has locked the table: 0, or a thread's number and a mark beside it, and
    /// how many times more. See detail/TableGuard.h.
    struct Lock {
        std::atomic<std::uintptr_t> holder = 0;
        std::uint32_t nested = 0;
    };

    struct Position {
        std::int32_t bucket;
        std::int32_t index;
        bool found;
        /// What the index of the texts has for the key, when there is one.
        kaz::detail::TextSlot* slot = nullptr;
    };

    std::int32_t bucketSlots() const { return bucketCount > 1 ? bucketCount : 1; }
    std::int32_t bucketOf(const void* key) const;
    std::int32_t bucketOfHash(unsigned hashed) const;
    Position findKey(const void* key) const;
    Position findText(const void* key) const;
    bool goesByIndex() const;
    /// bind for a text whose length is known.
    bool bind(void* key, std::int32_t length, void* value, bool replace);
    /// valueOf for one who holds the lock, and may know the length of the text.
    void* lookUp(const void* key, std::int32_t length, bool& found);
    void* lookUpInOrder(const void* key, bool& found);
    Position withSlot(const void* key, Position position) const;
    Position search(std::int32_t bucket, const void* key) const;
    void* exchangeValue(const Position& position, void* value);
    void putInOrder(std::int32_t bucket) const;
    void putAllInOrder() const;
    Position findAgain(const void* key, const Position& before, std::uint32_t revisionBefore) const;
    KazBucketEntry& entryAt(const Position& position) const;
    void remember(const Position& position);
    bool replaceValue(const void* key, Position position, void* value);
    void makeRoom(std::int32_t bucket);
    void insert(const Position& position, void* key, void* value);
    void append(void* key, void* value, const kaz::detail::TextProbe& probe,
                std::uint32_t textHash);
    void noteUnsorted(std::int32_t bucket);
    KazBucketEntry extract(const Position& position);

    std::int32_t bucketCount;
    std::int32_t entryCount = 0;
    std::int32_t cachedBucket = -1;
    std::int32_t cachedIndex = -1;
    Hash hash;
    Compare compare;
    CheckIn keyCheckIn = nullptr;
    CheckOut keyCheckOut = nullptr;
    CheckIn valueCheckIn = nullptr;
    CheckOut valueCheckOut = nullptr;
    KazBucket** buckets = nullptr;
    mutable Lock lock;
    /// Counts insertions and removals, so that a member knows whether an
    /// element function that it called has moved the entries.
    std::uint32_t revision = 0;
    /// Only where the keys are texts and the functions the string class's own,
    /// so that nobody can tell how often they are called.
    std::unique_ptr<kaz::detail::TextIndex> texts;
    /// With texts: how many entries of each bucket, from the first, are in
    /// order; new ones are added behind them. Part of the block of buckets.
    std::int32_t* sortedCounts = nullptr;
    /// How many are not. Iterators ask without the lock.
    mutable std::atomic<std::int32_t> unsortedCount = 0;
};
