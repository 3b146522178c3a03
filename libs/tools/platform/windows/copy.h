// SPDX-License-Identifier: Apache-2.0
/// @file
/// The one copy routine behind file copies by path and by directory.
#pragma once

#include "tools/platform/host_directory.h"

#include <string>

namespace kaz::host {

/// copyFile() by literal paths.
int copyLiteral(const std::wstring& source, const std::wstring& target, const CopyRules& rules);

} // namespace kaz::host
