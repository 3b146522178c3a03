// SPDX-License-Identifier: Apache-2.0
/// @file
/// Wildcard matching, shared by the platforms; they differ in what counts as
/// the same character.
#pragma once

#include <cstddef>
#include <string_view>

namespace kaz::host {

/// The rules of matches() with @p same(char, char) as the comparison. Only the
/// last "*" is ever tried again: an earlier one cannot do better, which is what
/// keeps the time at length times length.
template <typename Same>
bool matchWildcard(std::string_view pattern, std::string_view name, Same same) {
    if (pattern == "*.*")
        return true;
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t starAt = std::string_view::npos;
    std::size_t starTakes = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starAt = p++;
            starTakes = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || same(pattern[p], name[n]))) {
            ++p;
            ++n;
        } else if (starAt != std::string_view::npos) {
            p = starAt + 1;
            n = ++starTakes;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

} // namespace kaz::host
