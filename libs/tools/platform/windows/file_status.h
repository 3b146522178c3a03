// SPDX-License-Identifier: Apache-2.0
/// @file
/// Turning what the system says about a file into a FileStatus.
#pragma once

#include "tools/platform/host.h"

#include <string>

namespace kaz::host {

/// What the attributes alone tell; link for any reparse point that stands for
/// another place.
Kind kindOfAttributes(unsigned long attributes);

/// status() by a literal path; without following a link at its end on demand.
int statusOfLiteral(const std::wstring& path, bool followLink, FileStatus& result);

/// The same of what must be a regular file, links followed: otherwise it fails, with
/// EISDIR for a directory and EINVAL for what is no file at all.
int statusOfRegular(const std::wstring& path, FileStatus& result);

} // namespace kaz::host
