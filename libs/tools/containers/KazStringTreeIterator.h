// SPDX-License-Identifier: Apache-2.0
/// @file
/// Walks a tree of strings.
#pragma once

#include "tools/containers/KazStringTree.h"
#include "tools/containers/KazTreeIterator.h"

/// KazTreeIterator whose item() is the string.
class KAZ_API KazStringTreeIterator : public KazTreeIterator {
public:
    /// Stands on the first string; a null @p walked gives an iterator that is done.
    explicit KazStringTreeIterator(const KazStringTree& walked) : KazTreeIterator(walked) {}
    explicit KazStringTreeIterator(KazStringTree* walked) : KazTreeIterator(walked) {}

    /// To the string equal to @p text or, where there is none, the next one in the order;
    /// false, and done, when there is none.
    bool startAt(const KazString& text) { return KazTreeIterator::startAt(text.disguise()); }

    /// The string, sharing the stored block; empty when the iterator stands on
    /// none.
    KazString item() const;
};
