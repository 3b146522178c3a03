// SPDX-License-Identifier: Apache-2.0
/// @file
/// Text that a terminal shows and does not obey.
#pragma once

#include <string>
#include <string_view>

namespace kaz::detail {

/// @p text with its control characters made visible: "^X" (DEL: "^?"), and "?" for
/// what is no text in the user's locale, C1 controls and marks of direction included. Newlines and
/// tabs stay when @p keepLines.
std::string shownText(std::string_view text, bool keepLines);

/// How many columns @p text, a result of shownText() without lines, takes.
int columnsOf(std::string_view text);

/// The longest beginning of such a text that takes at most @p columns columns.
std::string_view cutToColumns(std::string_view text, int columns);

} // namespace kaz::detail
