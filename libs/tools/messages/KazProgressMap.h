// SPDX-License-Identifier: Apache-2.0
/// @file
/// The progress objects of an IO director, by number.
#pragma once

#include "tools/containers/KazHashTable.h"
#include "tools/export.h"

class KazProgress;

/// A hash table from progress number (the integer itself, in the key slot) to
/// KazProgress object. The table owns the objects: what is removed, replaced or
/// cleared is deleted. Bind a `KazProgress*`, not a pointer to a derived class,
/// as the untyped value.
class KAZ_API KazProgressMap : public KazHashTable {
public:
    KazProgressMap();
    ~KazProgressMap() override;

    /// Deletes @p progress; null is allowed.
    static void checkOut(KazProgress* progress);
};
