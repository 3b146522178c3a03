// SPDX-License-Identifier: Apache-2.0
/// @file
/// Walks a map of strings.
#pragma once

#include "tools/containers/KazHashTableIterator.h"
#include "tools/containers/KazStringToStringMap.h"

/// KazHashTableIterator that gives strings.
class KAZ_API KazStringToStringMapIterator : public KazHashTableIterator {
public:
    /// Stands on the first entry; a null @p walked gives an iterator that is done.
    explicit KazStringToStringMapIterator(const KazStringToStringMap* walked)
        : KazHashTableIterator(walked) {}
    explicit KazStringToStringMapIterator(const KazStringToStringMap& walked)
        : KazHashTableIterator(walked) {}

    /// The present key or value, sharing the stored block; empty when done.
    KazString getKey() const;
    KazString getValue() const;
};
