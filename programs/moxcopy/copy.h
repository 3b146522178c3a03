// SPDX-License-Identifier: Apache-2.0
/// @file
/// Copying what was planned.
#pragma once

#include "plan.h"

#include <cstdint>

class KazProgressHandle;

/// What has been copied so far, and what has not.
struct CopyResult {
    std::size_t files = 0;
    std::uintmax_t bytes = 0;
    Failures failures;
    bool diskFull = false; ///< the copy was given up

    /// Adds a failure; @p path as it is shown.
    void fail(const KazString& path, int errorNumber);
};

/// Copies the planned files from @p source, the system's open directory, into a new
/// directory @p name in @p destination. @p path is the source's, for messages. Each
/// file is a part of @p progress; the user may cancel after each file, and
/// between portions of a large one. Failures are collected, but a full disk ends the
/// copy: every later file would only fail too. Directories and files get the permission
/// bits of their sources, cut by the file-creation mask.
CopyResult copyPlanned(const Plan& plan, KazDirectory source, const KazString& path,
                       const KazDirectory& destination, const KazString& name,
                       KazProgressHandle& progress);
