// SPDX-License-Identifier: Apache-2.0
/// @file
/// Walks a collection.
#pragma once

#include "tools/containers/KazColl.h"

/// Walks a collection by index and stays valid whatever happens to it.
///
///     for (KazCollIterator i(collection); !i.isDone(); i.next())
///         use(i.item());
///
/// A new iterator stands on the first element. It may outlive the collection,
/// and is then done. Insertions and removals move it as KazColl tells.
class KAZ_API KazCollIterator {
public:
    /// Stands on the first element of @p walked; done when there is none.
    explicit KazCollIterator(KazColl& walked) : KazCollIterator(&walked) {}
    /// A null @p walked gives an iterator that is done.
    explicit KazCollIterator(KazColl* walked);
    /// Walks the same collection, from the same position.
    KazCollIterator(const KazCollIterator& other);
    ~KazCollIterator();

    /// Takes over the position only; this iterator goes on walking its own
    /// collection.
    KazCollIterator& operator=(const KazCollIterator& other);

    /// Whether the walk is over. An iterator that a removal has moved in front of the first
    /// element is not done.
    bool isDone() const { return index_ == done; }

    /// Steps to the next element. False when there is none: the iterator is
    /// then done, and stays so until reset().
    bool next() {
        if (!isDone() && (collection_ == nullptr || ++index_ >= collection_->size))
            index_ = done;
        return !isDone();
    }

    /// Back to the first element; done when there is none.
    void reset();

    /// The element, or null when the iterator stands on none.
    void* item() const { return collection_ != nullptr ? collection_->peek(index_) : nullptr; }

private:
    friend class KazColl;
    friend struct kaz::detail::Soundness;

    static constexpr std::int32_t done = -2;

    std::int32_t index_ = done;
    KazColl* collection_ = nullptr;
    KazCollIterator* nextIterator_ = nullptr;
};
