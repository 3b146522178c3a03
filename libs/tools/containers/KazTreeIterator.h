// SPDX-License-Identifier: Apache-2.0
/// @file
/// Walks a tree.
#pragma once

#include "tools/containers/KazTree.h"

/// Walks a tree in order, both ways, and stays valid while values are added
/// and removed: it keeps to its value. Each step takes time proportional to
/// the tree's depth.
///
/// A new iterator stands on the smallest value. When the value that it stands
/// on is removed, it stands in the gap: item() is null, next() goes to the
/// value behind the gap and previous() to the one before. It may outlive the
/// tree, and is then done; so it is after removeAll, copy and assignment.
class KAZ_API KazTreeIterator {
public:
    /// Stands on the smallest value; done when the tree is empty.
    explicit KazTreeIterator(const KazTree& walked);
    /// A null @p walked gives an iterator that is done.
    explicit KazTreeIterator(KazTree* walked);
    /// Walks the same tree, from the same position.
    KazTreeIterator(const KazTreeIterator& other);
    ~KazTreeIterator();
    /// Goes over to the other's tree and position.
    KazTreeIterator& operator=(const KazTreeIterator& other);

    /// Whether a walk in either direction has come to its end.
    bool isDone() const { return rank_ < 0; }

    /// Step to the value behind or before. False when there is none: the
    /// iterator is then done, and stays so until toFirst() or toLast().
    bool next();
    bool previous();

    /// To the smallest or the largest value; done when the tree is empty.
    void toFirst();
    void toLast();

    /// To the value equal to @p key or, where there is none, the first one behind its
    /// place; false, and done, when that is the end. Takes time proportional to the depth.
    bool startAt(const void* key);

    /// The value; null when the iterator stands on none.
    void* item() const { return tree_ != nullptr && !inGap_ ? tree_->valueAt(rank_) : nullptr; }

private:
    friend class KazTree;

    void enlist(const KazTree* walked);
    void resign();
    bool moveTo(int newRank);

    int rank_ = -1;
    bool inGap_ = false;
    const KazTree* tree_ = nullptr;
    KazTreeIterator* nextIterator_ = nullptr;
};
