/// @file
/// Copying what was planned.
#pragma once

#include "plan.h"

#include <cstdint>

class KazProgressHandle;

struct CopiedFile {
    KazString relative; ///< below the system's directory
    std::uintmax_t bytes = 0;
};

/// What has been copied so far, and what has not.
struct CopyResult {
    std::vector<KazString> directories; ///< relative; parents first
    std::vector<CopiedFile> files;
    std::vector<Failure> failures;
    bool diskFull = false; ///< the copy was given up

    /// Adds a failure; @p path is native.
    void fail(const KazString& path, int errorNumber);
};

/// Copies the planned files from @p source into @p destination, a directory that
/// exists and is empty. Each directory is a range of @p progress; the user may
/// cancel after each file. Failures are collected, but a full disk ends the
/// copy: every later file would only fail too.
CopyResult copyPlanned(const Plan& plan, const KazString& source, const KazString& destination,
                       KazProgressHandle& progress);
