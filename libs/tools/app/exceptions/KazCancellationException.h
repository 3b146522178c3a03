// SPDX-License-Identifier: Apache-2.0
/// @file
/// The user cancelled.
#pragma once

#include "tools/app/exceptions/KazException.h"

/// The user cancelled what the tool was doing.
class KAZ_API KazCancellationException : public KazException {
public:
    KazCancellationException();
    KazCancellationException(const KazCancellationException&) = default;
    KazCancellationException& operator=(const KazCancellationException&) = default;
    ~KazCancellationException() override;

    /// "Cancelled".
    const char* getErrorMessage() override;
    using KazException::getErrorMessage;
};
