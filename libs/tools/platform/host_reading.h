// SPDX-License-Identifier: Apache-2.0
/// @file
/// Part of the door to the operating system (see host.h for its conventions):
/// opening what somebody else may have put there. No function here waits, whatever
/// the name leads to: a pipe without a writer, a device, or a file that is
/// exchanged for one of these at that very moment.
#pragma once

#include <cstdio>

namespace kaz::host {

struct FileStatus;

/// Opens a regular file, links followed, for reading as fopen(path, "r") does, and
/// tells in @p info what was opened. Reading does not wait either: a file that
/// has nothing to give yet fails with EAGAIN. Not handed on to child processes.
/// The caller closes. Null with errno set: EISDIR for a directory, EINVAL for any
/// other special file.
std::FILE* openForReading(const char* path, FileStatus& info);

/// Whether fopen(path, "r") would succeed, once there were somebody at the other
/// end of a pipe.
bool canOpenForReading(const char* path);

} // namespace kaz::host
