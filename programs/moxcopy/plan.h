/// @file
/// What there is to copy, listed before anything is written.
#pragma once

#include "options.h"

#include <cstddef>
#include <vector>

/// Something that could not be copied, and why.
struct Failure {
    KazString path; ///< as the user knows it
    KazString reason;
};

/// A directory of the system and the files in it that are wanted.
struct PlannedDirectory {
    KazString relative; ///< below the system's directory, "" for that itself
    std::vector<KazString> files;
};

/// Directories come before those inside them.
struct Plan {
    std::vector<PlannedDirectory> directories;
    std::vector<Failure> failures;
    std::size_t fileCount = 0;
};

/// Lists the system. With restricted options only the directories that hold
/// wanted files are planned; otherwise empty ones are copied too.
Plan makePlan(const CopyOptions& options);
