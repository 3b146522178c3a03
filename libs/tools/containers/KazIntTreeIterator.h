// SPDX-License-Identifier: Apache-2.0
/// @file
/// Walks a tree of whole numbers.
#pragma once

#include "tools/containers/KazIntTree.h"
#include "tools/containers/KazTreeIterator.h"

/// KazTreeIterator whose item() is the value.
class KAZ_API KazIntTreeIterator : public KazTreeIterator {
public:
    /// Stands on the smallest value; a null @p walked gives an iterator that is done.
    explicit KazIntTreeIterator(const KazIntTree& walked) : KazTreeIterator(walked) {}
    explicit KazIntTreeIterator(KazIntTree* walked) : KazTreeIterator(walked) {}

    /// To @p value or, where it is missing, the next greater one; false, and done, when there
    /// is none.
    bool startAt(int value) { return KazTreeIterator::startAt(KazIntTree::toItem(value)); }

    /// The value, or 0 when the iterator stands on none.
    int item() const { return KazIntTree::toInt(KazTreeIterator::item()); }
};
