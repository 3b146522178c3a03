// SPDX-License-Identifier: Apache-2.0
#include "tools/app/failures/KazResourceException.h"

KazResourceException::KazResourceException() = default;
KazResourceException::KazResourceException(const char* message) : message_(message) {}
KazResourceException::~KazResourceException() = default;

const char* KazResourceException::getErrorMessage() {
    return message_.getValue();
}
