// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a program that nobody waits for leaves behind.
#pragma once

#include "testkit/temp_tree.h"

#include <string>

namespace kit {

/// The text of a file that another program puts into @p tree by renaming it: as soon as it
/// can be read, for a name may show on Windows before the file opens. "" after ten seconds.
std::string awaitText(const moxkit::TempTree& tree, const std::string& name);

} // namespace kit
