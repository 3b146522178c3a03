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

} // namespace kaz::host
