// SPDX-License-Identifier: Apache-2.0
/// @file
/// A text as it came from a caller, no longer than a string can be.
#pragma once

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/util/detail/or_empty.h"

#include <climits>
#include <string_view>

namespace kaz::detail {

/// The terminated text @p text; null reads as "".
/// @throws KazMemoryException for one longer than INT_MAX, the most that a string can hold
inline std::string_view boundedView(const char* text) {
    const std::string_view view = orEmpty(text);
    if (view.size() > INT_MAX)
        throw KazMemoryException();
    return view;
}

} // namespace kaz::detail
