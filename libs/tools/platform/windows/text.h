// SPDX-License-Identifier: Apache-2.0
/// @file
/// Text between the library's bytes and the system's 16-bit characters, and the
/// spelling of paths in which the system interprets nothing.
#pragma once

#include <string>
#include <string_view>

namespace kaz::host {

/// Bytes of the process's code page as 16-bit text.
std::wstring widened(std::string_view text);

/// 16-bit text in the process's code page. @p exact, where given, becomes false
/// when a character has no place there and came out as another one.
std::string narrowed(std::wstring_view text, bool* exact = nullptr);

/// The absolute form of a native path with the prefix that switches the system's
/// own reading of it off: longer than the old limit, names with a blank at
/// their end and names of devices are all taken as they stand. Empty with errno
/// set when there is no absolute form.
std::wstring literalPath(const char* path);

} // namespace kaz::host
