// SPDX-License-Identifier: Apache-2.0
/// @file
/// Text as a JSON string from which its bytes come back.
#pragma once

#include <string>
#include <string_view>

namespace kaz::detail {

/// Appends @p text as a JSON string, its quotes included, in UTF-8. Each byte that is no
/// part of a UTF-8 character becomes the lone surrogate `\udcXX`, XX being the byte: that
/// is how Python's "surrogateescape" takes such bytes in, so that nothing is lost. A C1
/// control stays, as in any other UTF-8.
void appendJson(std::string& out, std::string_view text);

} // namespace kaz::detail
