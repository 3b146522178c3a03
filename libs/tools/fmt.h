// SPDX-License-Identifier: Apache-2.0
/// @file
/// KazString in formats of the fmt library, which this header needs and the library
/// itself does not: fmt::format("{:>10}", name).
#pragma once

#include "tools/std.h"

#include <fmt/format.h>

/// As fmt::string_view, with all that its format says.
template <>
struct fmt::formatter<KazString> : fmt::formatter<fmt::string_view> {
    template <typename Context>
    auto format(const KazString& s, Context& context) const {
        const std::string_view text = kazView(s);
        return fmt::formatter<fmt::string_view>::format({text.data(), text.size()}, context);
    }
};
