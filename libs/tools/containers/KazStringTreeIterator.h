// SPDX-License-Identifier: Apache-2.0
/// @file
/// Walks a tree of strings.
#pragma once

#include "tools/containers/KazStringTree.h"
#include "tools/containers/KazTreeIterator.h"

/// KazTreeIterator whose item() is the string.
class KAZ_API KazStringTreeIterator : public KazTreeIterator {
public:
    explicit KazStringTreeIterator(const KazStringTree& walked) : KazTreeIterator(walked) {}
    explicit KazStringTreeIterator(KazStringTree* walked) : KazTreeIterator(walked) {}

    bool startAt(const KazString& text) { return KazTreeIterator::startAt(text.disguise()); }

    /// The string, sharing the stored block; empty when the iterator stands on
    /// none.
    KazString item() const;
};
