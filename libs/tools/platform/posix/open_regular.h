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

/// Opens a regular file for reading, links followed, without waiting, and tells what it
/// is in @p info. What the path names is looked at through the handle alone. Not open on
/// failure: EISDIR for a directory, EINVAL for any other special file, else the host's
/// reason.
Descriptor openRegular(const char* path, struct stat& info);

/// The same for what a tree holds: there it is looked at by name before, because opening
/// a device may do something, and a pipe's writer would notice. The name is relative to the open
/// directory @p dir. @p isPlain: it is known to be no link and, a moment ago, was a regular file.
Descriptor openRegular(int dir, const char* name, bool isPlain, struct stat& info);

} // namespace kaz::host
