// SPDX-License-Identifier: Apache-2.0
/// @file
/// Walks a hash table.
#pragma once

#include "tools/containers/KazHashTable.h"

/// Walks a table bucket by bucket, in ascending order of keys within each. It
/// refers to the table, which must neither change nor go meanwhile.
///
///     for (KazHashTableIterator i(table); !i.isDone(); i.next())
///         use(i.getKey(), i.getValue());
class KAZ_API KazHashTableIterator {
public:
    /// A null @p walked gives an iterator that is done.
    explicit KazHashTableIterator(const KazHashTable* walked) : table_(walked) { reset(); }
    /// Stands on the first entry of @p walked; done when there is none.
    explicit KazHashTableIterator(const KazHashTable& walked) : KazHashTableIterator(&walked) {}

    /// Back to the first entry.
    void reset();

    /// Steps to the next entry; false when there is none.
    bool next();

    /// Whether the walk is over.
    bool isDone() const;

    /// The stored key or value of the present entry; null when done.
    void* getKey() const;
    void* getValue() const;

private:
    const KazBucketEntry* entry() const;

    const KazHashTable* table_;
    std::int32_t bucket_ = 0;
    std::int32_t index_ = -1;
};
