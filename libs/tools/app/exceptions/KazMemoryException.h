// SPDX-License-Identifier: Apache-2.0
/// @file
/// The exception that every failed allocation ends in.
#pragma once

#include "tools/app/exceptions/KazException.h"

/// Memory ran out. Copying it allocates nothing.
class KAZ_API KazMemoryException : public KazException {
public:
    KazMemoryException();
    KazMemoryException(const KazMemoryException&) = default;
    KazMemoryException& operator=(const KazMemoryException&) = default;
    ~KazMemoryException() override;

    /// "Out of memory or swap space".
    const char* getErrorMessage() override;
    using KazException::getErrorMessage;
};
