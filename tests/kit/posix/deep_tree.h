// SPDX-License-Identifier: Apache-2.0
/// @file
/// Trees whose paths are longer than any path may be.
#pragma once

#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace kit {

/// A chain of so many directories called "d" below an existing one, with a file "f" at
/// its end.
inline void digTree(const std::string& top, int levels) {
    int place = ::open(top.c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < levels; ++i) {
        ::mkdirat(place, "d", 0755);
        const int below = ::openat(place, "d", O_RDONLY | O_DIRECTORY);
        ::close(place);
        place = below;
    }
    ::close(::openat(place, "f", O_WRONLY | O_CREAT, 0644));
    ::close(place);
}

/// The length of such a chain; -1 when there is no file at its end.
inline int depthOfTree(const std::string& top) {
    int depth = -1;
    int place = ::open(top.c_str(), O_RDONLY | O_DIRECTORY);
    for (int below = place; below >= 0; ++depth) {
        place = below;
        below = ::openat(place, "d", O_RDONLY | O_DIRECTORY);
        if (below >= 0)
            ::close(place);
    }
    const bool isWhole = ::faccessat(place, "f", F_OK, 0) == 0;
    ::close(place);
    return isWhole ? depth : -1;
}

} // namespace kit
