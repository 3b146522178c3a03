/// @file
/// Opening a file that is going to be read to its end.
#pragma once

#include "tools/platform/host.h"

#include <cstdio>

namespace kaz::detail {

/// Opens @p path in @p mode when it names a regular file, links followed; null
/// otherwise. Opening a pipe waits for a writer that may never come, and a device
/// may never end.
inline std::FILE* openRegularFile(const char* path, const char* mode) {
    host::FileStatus status;
    const bool isFile = host::status(path, status) == 0 && status.kind == host::Kind::file;
    return isFile ? host::openStream(path, mode) : nullptr;
}

} // namespace kaz::detail
