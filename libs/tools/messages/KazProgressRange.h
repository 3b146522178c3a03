// SPDX-License-Identifier: Apache-2.0
/// @file
/// One level of nested progress.
#pragma once

#include "tools/export.h"

/// Maps the progress of one step, 0 to 100 percent, onto its part of the
/// overall scale. Made and kept by KazProgress.
class KAZ_API KazProgressRange {
public:
    double start = 0;   ///< overall progress when the range was opened
    double end = 100;   ///< overall progress at which it is complete
    double share = 100; ///< percent of the enclosing range
    double percent = 0; ///< progress within this range, 0 to 100
    double scale = 1.0; ///< overall units for one percent of this range

    KazProgressRange() = default;
    KazProgressRange(const KazProgressRange&) = default;
    KazProgressRange& operator=(const KazProgressRange&) = default;
    virtual ~KazProgressRange();

    /// The same object, or no field less or greater than its counterpart; so
    /// two fields that are not numbers count as equal.
    bool operator==(const KazProgressRange& other) const;
    bool operator!=(const KazProgressRange& other) const;
};
