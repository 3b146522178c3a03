// SPDX-License-Identifier: Apache-2.0
/// @file
/// Walks a collection of strings.
#pragma once

#include "tools/containers/KazCollIterator.h"
#include "tools/containers/KazStringColl.h"

/// KazCollIterator whose item() is the string.
class KAZ_API KazStringCollIterator : public KazCollIterator {
public:
    /// Stands on the first string; a null @p walked gives an iterator that is done.
    explicit KazStringCollIterator(KazStringColl& walked) : KazCollIterator(walked) {}
    explicit KazStringCollIterator(KazStringColl* walked) : KazCollIterator(walked) {}

    /// The string, sharing the stored block; empty when the iterator stands on
    /// none.
    KazString item() const;
};
