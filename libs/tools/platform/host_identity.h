// SPDX-License-Identifier: Apache-2.0
/// @file
/// Part of the door to the operating system (see host.h for its conventions):
/// whether two names or two answers of the system are about one file.
#pragma once

namespace kaz::host {

struct FileStatus;

/// Do both tell of one file? False where either tells of none.
bool sameFile(const FileStatus& a, const FileStatus& b);

/// Do both paths, links followed, lead to one file that exists?
bool sameFile(const char* a, const char* b);

} // namespace kaz::host
