// SPDX-License-Identifier: Apache-2.0
/// @file
/// Reading from a stream to the end.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdio>

namespace kaz::detail {

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
