// SPDX-License-Identifier: Apache-2.0
/// @file
/// Turning what the system says about a file into a FileStatus.
#pragma once

#include "tools/platform/host.h"
#include "tools/platform/posix/descriptor.h"

#include <sys/stat.h>

namespace kaz::host {

inline Kind kindOf(mode_t mode) {
    if (S_ISREG(mode))
        return Kind::file;
    if (S_ISDIR(mode))
        return Kind::directory;
    return S_ISLNK(mode) ? Kind::link : Kind::special;
}

inline FileStatus statusOf(const struct stat& info) {
    FileStatus result;
    result.kind = kindOf(info.st_mode);
    result.mode = info.st_mode & 0777;
    result.size = static_cast<std::uint64_t>(info.st_size);
    result.modified = info.st_mtime;
    result.device = info.st_dev;
    result.serial = info.st_ino;
    return result;
}

/// fstatat as a FileStatus; 0, or -1 with errno set and @p result a default one.
inline int statusAt(int dir, const char* name, int flags, FileStatus& result) {
    struct stat info;
    const int failed = retry([&] { return ::fstatat(dir, name, &info, flags); });
    result = failed == 0 ? statusOf(info) : FileStatus();
    return failed;
}

} // namespace kaz::host
