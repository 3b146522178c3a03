// SPDX-License-Identifier: Apache-2.0
/// @file
/// Orders as functions of the library give them.
#pragma once

namespace kaz::detail {

/// -1, 0 or 1: @p a stands before, with or behind @p b.
template <class T>
constexpr int compared(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

/// The sign of an order that is any number.
constexpr int signOf(int order) {
    return compared(order, 0);
}

} // namespace kaz::detail
