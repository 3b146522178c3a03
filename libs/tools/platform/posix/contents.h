// SPDX-License-Identifier: Apache-2.0
/// @file
/// Copying what is in a file.
#pragma once

#include <cstddef>
#include <sys/stat.h>

namespace kaz::host {

struct CopyRules;

/// Files below this size take one read and one write, which beats the set-up of
/// a copy inside the kernel.
inline constexpr std::size_t smallSize = std::size_t{64} * 1024;

/// Copies what the open file @p source holds, of which @p info is known, into the
/// open and empty file @p target. Both stand at their beginning. What the source
/// shares with other files the target shares too, where the file system does that;
/// holes stay holes. Of @p rules count goesOn and size.
int copyContents(int source, const struct stat& info, int target, const CopyRules& rules);

} // namespace kaz::host
