/// @file
/// The one copy routine behind file copies by path and by directory handle.
#pragma once

namespace kaz::host {

/// copyFile() with names in the host's spelling, relative to open directories
/// (AT_FDCWD for the current one).
int copyAt(int sourceDir, const char* source, int targetDir, const char* target, bool mayReplace);

} // namespace kaz::host
