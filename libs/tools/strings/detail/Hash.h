// SPDX-License-Identifier: Apache-2.0
/// @file
/// The hash of a text.
#pragma once

#include "tools/platform/processor/vector.h"
#include "tools/strings/detail/Characters.h"

#include <array>
#include <cstddef>
#include <functional>
#include <utility>

namespace kaz::detail {

/// Each character is shifted by 7 bits more than the one before, modulo 23.
inline constexpr std::array<unsigned, 23> hashShifts = [] {
    std::array<unsigned, 23> shifts{};
    for (std::size_t i = 0; i < shifts.size(); ++i)
        shifts[i] = static_cast<unsigned>(i * 7 % 23);
    return shifts;
}();

/// One round of the shift sequence, unrolled: with the shifts as constants it
/// runs several times as fast as a loop that computes them.
template <class Ch, class Map, std::size_t... I>
unsigned hashRound(const Ch* s, const Map& map, std::index_sequence<I...>) {
    return ((Characters<Ch>::code(map(s[I])) << hashShifts[I]) + ...);
}

/// The wrapping sum of the shifted characters, each passed through @p map.
template <class Ch, class Map>
unsigned hashText(Text<Ch> s, const Map& map) {
    unsigned h = 0;
    constexpr std::ptrdiff_t round = hashShifts.size();
    for (; s.length >= round; s.data += round, s.length -= round)
        h += hashRound(s.data, map, std::make_index_sequence<hashShifts.size()>());
    for (std::ptrdiff_t i = 0; i < s.length; ++i)
        h += Characters<Ch>::code(map(s.data[i])) << hashShifts[static_cast<std::size_t>(i)];
    return h;
}

/// The hash of the characters as they stand.
template <class Ch>
unsigned hashText(Text<Ch> s) {
    if constexpr (sizeof(Ch) == 1)
        return host::bytes().hash(s.data, static_cast<std::size_t>(s.length));
    else
        return hashText(s, std::identity{});
}

} // namespace kaz::detail
