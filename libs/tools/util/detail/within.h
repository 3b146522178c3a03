// SPDX-License-Identifier: Apache-2.0
/// @file
/// Whether an argument is part of the block that is about to change.
#pragma once

#include <cstddef>
#include <functional>

namespace kaz::detail {

/// Whether @p place lies in the @p length characters or slots at @p block or right
/// behind them, where a text has its terminator. A null @p block contains nothing.
template <class Ch>
bool isWithin(const Ch* place, const Ch* block, std::size_t length) {
    // std::less orders pointers of different blocks too.
    return block != nullptr && !std::less<>()(place, block) &&
           !std::less<>()(block + length, place);
}

} // namespace kaz::detail
