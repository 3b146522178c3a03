// SPDX-License-Identifier: Apache-2.0
/// @file
/// Base of the state that a library of the suite keeps in the master context.
#pragma once

#include "tools/export.h"

/// An empty polymorphic base; copy and assignment copy nothing.
class KAZ_API KazContext {
public:
    KazContext() = default;
    KazContext(const KazContext&) = default;
    KazContext& operator=(const KazContext&) = default;
    virtual ~KazContext();
};
