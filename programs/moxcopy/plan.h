// SPDX-License-Identifier: Apache-2.0
/// @file
/// What there is to copy, listed before anything is written.
#pragma once

#include "common/failures.h"
#include "options.h"
#include "tools/files/KazDirectory.h"

#include <cstddef>
#include <vector>

/// A directory of the system and the files in it that are wanted.
struct PlannedDirectory {
    KazString name;    ///< "" for the system's own
    int depth = 0;     ///< levels below that
    unsigned mode = 0; ///< the permission bits
    std::vector<KazDirectoryEntry> files;
};

/// Each directory is followed by those in it, so that the way from one to the next
/// leads up some levels, or none, and then down one.
struct Plan {
    std::vector<PlannedDirectory> directories;
    Failures failures;
    std::size_t fileCount = 0;
    std::size_t directoryCount = 0; ///< without those that only lead to others
};

/// Lists the system in @p source, an open directory. With restricted options only the
/// directories are planned that hold wanted files or lead to some; otherwise empty ones
/// are copied too. What runs of this tool are still working in, or have left behind
/// when they were killed, is passed over.
Plan makePlan(const CopyOptions& options, KazDirectory source);
