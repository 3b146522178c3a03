/// @file
/// Opening a file that is going to be read to its end, and reading it.
#pragma once

#include "tools/platform/host.h"

#include <cerrno>
#include <cstddef>
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

/// Reads @p size bytes; fewer only at the end of the file or after a failure, which
/// std::ferror then tells. Goes on where a signal has interrupted it.
inline std::size_t readFully(std::FILE* stream, void* to, std::size_t size) {
    std::size_t count = 0;
    do {
        std::clearerr(stream);
        count += std::fread(static_cast<char*>(to) + count, 1, size - count, stream);
    } while (std::ferror(stream) != 0 && errno == EINTR);
    return count;
}

} // namespace kaz::detail
