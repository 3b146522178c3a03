/// @file
/// The one copy routine behind file copies by path and by directory handle.
#pragma once

namespace kaz::host {

/// copyFile() with names in the host's spelling, relative to open directories
/// (AT_FDCWD for the current one). @p isPlain: the source is known to be a regular
/// file and no link.
int copyAt(int sourceDir, const char* source, bool isPlain, int targetDir, const char* target,
           bool mayReplace);

} // namespace kaz::host
