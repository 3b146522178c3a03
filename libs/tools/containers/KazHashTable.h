// SPDX-License-Identifier: Apache-2.0
/// @file
/// The library's untyped associative table.
#pragma once

#include "tools/export.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace kaz::detail {
struct Soundness;
} // namespace kaz::detail

/// One binding, as a bucket stores it.
struct KazBucketEntry {
    void* key;   ///< as check-in returned it
    void* value; ///< the same
};

/// A bucket's block: `count` entries in ascending order of their keys, room
/// for `capacity`, directly behind these two numbers.
struct KazBucket {
    std::int32_t count;    ///< entries in use
    std::int32_t capacity; ///< entries that there is room for

    /// The first entry.
    KazBucketEntry* entries() { return reinterpret_cast<KazBucketEntry*>(this + 1); }
};

/// A table from keys to values, both `void*`. A hash picks the bucket, a
/// binary search finds the key in it; the table never rehashes. It remembers
/// where it found the last key, so that asking twice costs one comparison.
/// With KazString::compareDisguised and hashDisguised, or both of their forms without
/// case, and keys that are checked in it finds keys in constant time whatever the number
/// of buckets, and sorts those added since only when their order is looked at.
///
///     KazHashTable table(KazHashTable::comparePointers, KazHashTable::hashPointer, 31);
///     table.bind(key, value, true);
///     void* found = table.valueOf(key);
///
/// Optional element functions let the table own what it stores: check-in is
/// called on what enters, and its result is stored; check-out is called on
/// what leaves. They may look at the table and change it, and see it so:
/// - During check-in the bucket has room for the entry, which is in, and counted,
///   only after both check-ins have returned.
/// - During check-out the entry still counts, in its bucket too. What is being
///   checked out, or has been, reads as null in its place. While unbind checks the
///   value out the key is still bound; once a key is being checked out it is found
///   by valueOf and isBound only when asked for by its own address, and nothing else
///   meets it: it is never compared, and an equal one may be bound beside it.
/// Check-out must not throw.
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
    using Hash = unsigned (*)(const void*); ///< the hash of a key; equal keys have equal ones
    using CheckIn = void* (*)(void*);       ///< called on what enters; what it returns is stored
    using CheckOut = void (*)(void*);       ///< called on what leaves; must not throw

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

    /// Removes the key, its value checked out first, then the key, then the entry taken
    /// out; false when not bound.
    bool unbind(const void* key);

    /// The stored value, or null when @p key is not bound.
    void* valueOf(const void* key);
    /// The same; @p found tells a bound null from an absent key.
    void* valueOf(const void* key, bool& found);

    /// Whether @p key has a value, be it null.
    bool isBound(const void* key);

    /// The number of keys bound.
    int getSize() const;

    /// Removes everything: for each entry the key is checked out, then the value; a
    /// bucket's block goes when its entries are, and the table counts 0 at the end. What
    /// a check-out binds meanwhile goes as well if the walk has yet to come there.
    void clear();

    /// Gives back room that the buckets do not need at present.
    void freeExtra();

    /// The entries of a bucket as key, value, key, value, ...; null for a
    /// bucket without entries and for one that does not exist. Count and
    /// capacity, 32 bits each, stand directly before them. Good until the
    /// table changes. What is written there counts; as the table cannot notice, it goes
    /// by its buckets alone from then on until it is cleared, which with the string
    /// class's functions and full buckets is slower.
    void** getBucketData(int bucket) const;

    /// The pointer's value, and the order of two. Together they key a table by
    /// pointers, or by integers kept in the key's place. The order is the
    /// difference where that fits an int, else its sign alone.
    static unsigned hashPointer(const void* key);
    static int comparePointers(const void* a, const void* b);

private:
    friend class KazHashTableIterator;
    friend class KazStringToStringMap;
    friend struct kaz::detail::Soundness;
    class Guard;
    class Held;
    struct Hidden;

    /// Who has locked the table: 0, or a thread's number and a mark beside it, and
    /// how many times more. See detail/HeldTable.h.
    struct Lock {
        std::atomic<std::uintptr_t> holder = 0;
        std::uint32_t nested = 0;
    };

    std::int32_t bucketCount_;
    std::int32_t entryCount_ = 0;
    std::int32_t cachedBucket_ = -1;
    std::int32_t cachedIndex_ = -1;
    Hash hash_;
    Compare compare_;
    CheckIn keyCheckIn_ = nullptr;
    CheckOut keyCheckOut_ = nullptr;
    CheckIn valueCheckIn_ = nullptr;
    CheckOut valueCheckOut_ = nullptr;
    KazBucket** buckets_ = nullptr;
    mutable Lock lock_;
    std::unique_ptr<Hidden> hidden_;
};
