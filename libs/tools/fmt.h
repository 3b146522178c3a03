// SPDX-License-Identifier: Apache-2.0
/// @file
/// KazString in formats of the fmt library, which this header needs and the library
/// itself does not: fmt::format("{:>10}", name).
#pragma once

#include "tools/std.h"

#include <fmt/format.h>

namespace fmt {

/// Formats a string as fmt::string_view, with all that its format says.
template <>
struct formatter<KazString> : formatter<string_view> {
    /// Writes the text of @p s with its whole length.
    template <typename Context>
    auto format(const KazString& s, Context& context) const {
        const std::string_view text = kazView(s);
        return formatter<string_view>::format({text.data(), text.size()}, context);
    }
};

} // namespace fmt
