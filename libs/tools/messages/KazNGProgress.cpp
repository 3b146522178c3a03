// SPDX-License-Identifier: Apache-2.0
#include "tools/messages/KazNGProgress.h"

KazNGProgress::KazNGProgress() = default;
KazNGProgress::~KazNGProgress() = default;

unsigned int KazNGProgress::setProgress(unsigned int value) {
    progress_ = value;
    return value;
}

unsigned int KazNGProgress::getProgress() const {
    return progress_;
}
