// SPDX-License-Identifier: Apache-2.0
/// @file
/// The one copy routine behind file copies by path and by directory handle.
#pragma once

#include "tools/platform/host_directory.h"

namespace kaz::host {

/// copyFile() with names in the host's spelling, relative to open directories
/// (AT_FDCWD for the current one). @p isPlain: the source is known to be a regular
/// file and no link. @p granted: permission bits that new files beside @p target are
/// known to get when they are asked for; the copy adds to them what it learns.
int copyAt(int sourceDir, const char* source, bool isPlain, int targetDir, const char* target,
           const CopyRules& rules, unsigned& granted);

} // namespace kaz::host
