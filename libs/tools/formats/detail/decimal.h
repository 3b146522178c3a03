// SPDX-License-Identifier: Apache-2.0
/// @file
/// Numbers in documents, whatever the locale writes instead of a point.
#pragma once

#include "tools/formats/detail/TextBuilder.h"

#include <charconv>
#include <cstdint>
#include <iterator>

namespace kaz::detail {

inline void appendNumber(TextBuilder& out, std::int64_t value) {
    char digits[24];
    const auto end = std::to_chars(digits, std::end(digits), value).ptr;
    out.append(digits, static_cast<std::size_t>(end - digits));
}

/// @p value in units of 10^-places, all places written; not below 0.
inline void appendDecimal(TextBuilder& out, std::int64_t value, int places) {
    std::int64_t unit = 1;
    for (int i = 0; i < places; ++i)
        unit *= 10;
    appendNumber(out, value / unit);
    out.append('.');
    for (std::int64_t rest = value % unit; unit > 1;) {
        unit /= 10;
        out.append(static_cast<char>('0' + rest / unit));
        rest %= unit;
    }
}

/// numerator / denominator to the nearest whole number, halves away from 0; none below 0.
constexpr std::int64_t rounded(std::int64_t numerator, std::int64_t denominator) {
    return (numerator + denominator / 2) / denominator;
}

/// The longest measure that is taken, in tenths of a millimetre.
constexpr int longestMeasure = 20000;

/// Tenths of a millimetre in twips (1/20 point).
constexpr std::int64_t twips(int tenths) {
    return rounded(std::int64_t{tenths} * 1440, 254);
}

/// Tenths of a millimetre in thousandths of a point.
constexpr std::int64_t milliPoints(int tenths) {
    return rounded(std::int64_t{tenths} * 72000, 254);
}

} // namespace kaz::detail
