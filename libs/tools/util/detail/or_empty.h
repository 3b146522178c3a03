// SPDX-License-Identifier: Apache-2.0
/// @file
/// How a null text reads.
#pragma once

namespace kaz::detail {

template <class Ch>
struct NoText {
    static constexpr Ch characters[1] = {};
};

/// The terminated text @p text; null reads as "".
template <class Ch>
constexpr const Ch* orEmpty(const Ch* text) {
    return text != nullptr ? text : NoText<Ch>::characters;
}

} // namespace kaz::detail
