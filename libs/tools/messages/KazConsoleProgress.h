// SPDX-License-Identifier: Apache-2.0
/// @file
/// A progress shown as a row of dots.
#pragma once

#include "tools/messages/KazProgress.h"

/// Writes one "." to standard output for every 5 percent gained. A value that
/// goes down is not guarded against: the number of dots is an unsigned
/// difference.
class KAZ_API KazConsoleProgress : public KazProgress {
public:
    KazConsoleProgress();
    KazConsoleProgress(const KazConsoleProgress&) = default;
    KazConsoleProgress& operator=(const KazConsoleProgress&) = default;
    ~KazConsoleProgress() override;

private:
    /// Gives the value before this one back.
    unsigned int setProgress(unsigned int value) override;
    unsigned int getProgress() const override;

    unsigned int progress_ = 0;
};
