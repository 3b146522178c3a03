// SPDX-License-Identifier: Apache-2.0
/// @file
/// The one copy routine behind file copies by path and by directory handle.
#pragma once

#include "tools/platform/host_directory.h"

namespace kaz::host {

/// A name in the host's spelling, relative to an open directory (AT_FDCWD for the
/// current one).
struct Place {
    int directory;
    const char* name;
};

/// What is known of a copy beforehand.
struct CopyKnowledge {
    bool isPlain = false; ///< the source is a regular file and no link
    /// Permission bits that new files beside the target get when they are asked for.
    unsigned granted = 0;
};

/// copyFile() between two places. What it learns about permissions is added to @p known.
int copyAt(Place source, Place target, const CopyRules& rules, CopyKnowledge& known);

} // namespace kaz::host
