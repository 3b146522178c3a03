// SPDX-License-Identifier: Apache-2.0
/// @file
/// Two items with one key in an ordered tree.
#pragma once

#include "tools/app/exceptions/KazException.h"

/// An item that was added to an ordered tree clashes with one already there.
/// It has no message: only the thrower's caller knows what a clash means.
class KAZ_API KazTreeClashException : public KazException {
public:
    /// @param clashData  the clashing item as the tree gives it; not owned
    explicit KazTreeClashException(void* clashData);
    KazTreeClashException(const KazTreeClashException&) = default;
    KazTreeClashException& operator=(const KazTreeClashException&) = default;
    ~KazTreeClashException() override;

    /// The item given to the constructor: for KazTree the value that was there already.
    void* getClashData() { return clashData_; }

private:
    void* clashData_;
};
