// SPDX-License-Identifier: Apache-2.0
/// @file
/// A text that may be null, as a view.
#pragma once

#include "tools/util/detail/or_empty.h"

#include <string_view>

namespace kaz::detail {

/// The terminated text @p text; null reads as "".
constexpr std::string_view viewOf(const char* text) {
    return orEmpty(text);
}

} // namespace kaz::detail
