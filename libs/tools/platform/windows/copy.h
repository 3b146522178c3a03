/// @file
/// The one copy routine behind file copies by path and by directory.
#pragma once

#include <string>

namespace kaz::host {

/// copyFile() by literal paths.
int copyLiteral(const std::wstring& source, const std::wstring& target, bool mayReplace);

} // namespace kaz::host
