// SPDX-License-Identifier: Apache-2.0
/// @file
/// What Windows holds a directory by; see tools/platform/host_directory.h.
#pragma once

#include <string>

namespace kaz::host {

/// There is no way to name a file relative to an open directory; a directory is
/// held by its literal path instead, in which no entry name means anything else.
struct OpenDirectory {
    std::wstring path{}; ///< ends with a backslash; "" where none is open
};

} // namespace kaz::host
