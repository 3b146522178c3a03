// SPDX-License-Identifier: Apache-2.0
/// @file
/// Walks a collection of whole numbers.
#pragma once

#include "tools/containers/KazCollIterator.h"
#include "tools/containers/KazIntColl.h"

/// KazCollIterator whose item() is the value.
class KAZ_API KazIntCollIterator : public KazCollIterator {
public:
    /// Stands on the first value; a null @p walked gives an iterator that is done.
    explicit KazIntCollIterator(KazIntColl& walked) : KazCollIterator(walked) {}
    explicit KazIntCollIterator(KazIntColl* walked) : KazCollIterator(walked) {}

    /// The value, or 0 when the iterator stands on none.
    int item() const { return KazIntColl::toInt(KazCollIterator::item()); }
};
