// SPDX-License-Identifier: Apache-2.0
/// @file
/// "Did you mean": the words that are near to one that was not understood.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::detail {

/// How many insertions, deletions, replacements and swaps of neighbours lead from @p a
/// to @p b, each character taking part in one of them (the restricted
/// Damerau-Levenshtein distance). ASCII case does not count. More than @p limit is given
/// as limit + 1. Time in proportion to the product of the lengths.
std::size_t editDistance(std::string_view a, std::string_view b, std::size_t limit);

/// How far away a word of @p length characters may be to be meant: 0 up to 2
/// characters, 1 up to 4, 2 up to 8, else 3.
std::size_t allowedDistance(std::size_t length);

/// The nearest of @p candidates to @p word, at most three, in their order; none when all
/// are too far away. Leading dashes do not count.
std::vector<std::string> nearWords(std::string_view word,
                                   const std::vector<std::string>& candidates);

/// "; did you mean A, B or C?", or "" for no words.
std::string hintOf(const std::vector<std::string>& words);

/// "A, B @p last C".
std::string listOf(const std::vector<std::string>& words, std::string_view last);

} // namespace kaz::detail
