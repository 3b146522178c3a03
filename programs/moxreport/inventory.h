// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a project holds.
#pragma once

#include "common/failures.h"
#include "options.h"
#include "tools/files/KazDirectory.h"

#include <cstdint>
#include <vector>

class KazProgressHandle;

/// Anything in a directory but a directory.
struct ReportedFile {
    KazString name; ///< as the host spells it
    KazFileStatus status;
};

/// A directory of a system that holds files.
struct Folder {
    KazString path; ///< from the system, "/" between names as the host spells them; "" for its own
    std::vector<ReportedFile> files; ///< by name
};

struct Totals {
    std::size_t files = 0;
    std::uint64_t bytes = 0;
    std::int64_t modified = 0; ///< the latest; without meaning when there are no files

    /// Counts a file or a link, which has no size of its own.
    void add(const KazFileStatus& status);
    void add(const Totals& other);
};

struct Diagram {
    KazString name;
    std::size_t revisions = 0;
    KazString newest; ///< the highest revision, or ""
    Totals totals;
};

struct System {
    KazString name;
    std::vector<Folder> folders;   ///< its own first, then each before those in it
    std::vector<Diagram> diagrams; ///< by name
    Totals totals;
};

struct Inventory {
    std::vector<System> systems;     ///< by name
    std::vector<ReportedFile> files; ///< beside the systems
    Failures failures;               ///< what could not be read
    Totals totals;                   ///< of the systems
};

/// Reads the project in @p top, an open directory: the system that @p options names, or all,
/// which are its directories whose names do not begin with a point. A system's diagrams are
/// what its files "NAME.dgm" and, in its folder "filestore", "NAME.REVISION" stand for. No link
/// is followed and no file is opened; what cannot be read becomes a failure. The
/// @p progress moves by @p share percent.
Inventory takeInventory(const ReportOptions& options, const KazDirectory& top,
                        KazProgressHandle& progress, double share);
