// SPDX-License-Identifier: Apache-2.0
#include "tools/app/exceptions/KazCancellationException.h"

KazCancellationException::KazCancellationException() = default;
KazCancellationException::~KazCancellationException() = default;

const char* KazCancellationException::getErrorMessage() {
    return "Cancelled";
}
