// SPDX-License-Identifier: Apache-2.0
/// @file
/// Moving a finished copy to its place.
#pragma once

#include "copy.h"

/// Moves the directory @p name from @p staging to @p target: as a whole where nothing
/// has that name there, else what is in it, directory by directory and file by file.
/// Files replace those of the same name; a directory of the destination that is none
/// of this kind by now, a link say, is left alone. @p path is that of @p target. Unless
/// the copy is @p isOver an earlier one, nothing may have that name there. What
/// cannot be moved becomes a failure of @p result and counts no longer.
/// @return how many files were in the destination already and are still as they were.
std::size_t moveIntoPlace(const KazDirectory& staging, const KazDirectory& target,
                          const KazString& name, const KazString& path, bool isOver,
                          CopyResult& result);
