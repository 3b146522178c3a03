// SPDX-License-Identifier: Apache-2.0
/// @file
/// Opening a file that must be a regular one.
#pragma once

#include "tools/platform/posix/descriptor.h"

#include <sys/stat.h>

namespace kaz::host {

/// fstatat, repeated where a signal interrupts it.
inline int look(int dir, const char* name, int flags, struct stat& info) {
    return retry([&] { return ::fstatat(dir, name, &info, flags); });
}

/// Opens a regular file for reading, links followed, and tells what it is in
/// @p info. The name is relative to the open directory @p dir. @p isPlain: it is
/// known to be no link and, a moment ago, was a regular file. Not open on failure:
/// EISDIR for a directory, EINVAL for any other special file, else the host's
/// reason.
Descriptor openRegular(int dir, const char* name, bool isPlain, struct stat& info);

} // namespace kaz::host
