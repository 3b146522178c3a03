// SPDX-License-Identifier: Apache-2.0
#include "tools/app/exceptions/KazMemoryException.h"

KazMemoryException::KazMemoryException() = default;
KazMemoryException::~KazMemoryException() = default;

const char* KazMemoryException::getErrorMessage() {
    return "Out of memory or swap space";
}
