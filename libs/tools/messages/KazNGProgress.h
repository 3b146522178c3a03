// SPDX-License-Identifier: Apache-2.0
/// @file
/// A progress that is only counted.
#pragma once

#include "tools/messages/KazProgress.h"

/// Keeps the overall value and shows it nowhere.
class KAZ_API KazNGProgress : public KazProgress {
public:
    KazNGProgress();
    KazNGProgress(const KazNGProgress&) = default;
    KazNGProgress& operator=(const KazNGProgress&) = default;
    ~KazNGProgress() override;

private:
    /// Gives @p value back.
    unsigned int setProgress(unsigned int value) override;
    unsigned int getProgress() const override;

    unsigned int progress_ = 0;
};
