// SPDX-License-Identifier: Apache-2.0
/// @file
/// A failure that its thrower describes.
#pragma once

#include "tools/app/exceptions/KazException.h"
#include "tools/strings/KazString.h"

/// Something the tool needs is missing or unusable; the thrower words it.
class KAZ_API KazResourceException : public KazException {
public:
    /// Without a message.
    KazResourceException();
    /// Copies @p message; null and "" both mean that there is none.
    explicit KazResourceException(const char* message);
    KazResourceException(const KazResourceException&) = default;
    KazResourceException& operator=(const KazResourceException&) = default;
    ~KazResourceException() override;

    /// The message; "" when there is none.
    const char* getErrorMessage() override;
    using KazException::getErrorMessage;

private:
    KazString message_;
};
