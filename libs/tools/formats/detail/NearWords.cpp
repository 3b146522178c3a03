// SPDX-License-Identifier: Apache-2.0
// The distance counts letters that are put in, left out, exchanged, or swapped with their
// neighbour, in either case. How far a word may be grows with its length: of a short word little
// is left when two letters differ. Only the nearest candidates are kept, in the order in which
// they were given.
#include "tools/formats/detail/NearWords.h"

#include <algorithm>

namespace kaz::detail {

namespace {

constexpr std::size_t mostWords = 3;
/// Nobody misspells words of this length; without a bound a line of a megabyte would
/// take its time.
constexpr std::size_t longestWord = 256;

char folded(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view withoutDashes(std::string_view word) {
    return word.substr(std::min(word.find_first_not_of('-'), word.size()));
}

} // namespace

/// The time is the product of both lengths, which `longestWord` bounds; three rows of memory. A
/// pair of neighbours that was swapped is never changed again: the usual, restricted distance.
std::size_t editDistance(std::string_view a, std::string_view b, std::size_t limit) {
    if (std::max(a.size(), b.size()) > longestWord)
        return limit + 1;
    // Rows of the table of distances between beginnings: the one before the last, the
    // last, and the one being made.
    std::vector<std::size_t> older(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = folded(a[i - 1]) == folded(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && folded(a[i - 1]) == folded(b[j - 2]) &&
                folded(a[i - 2]) == folded(b[j - 1]))
                row[j] = std::min(row[j], older[j - 2] + 1);
        }
        older.swap(last);
        last.swap(row);
    }
    return std::min(last[b.size()], limit + 1);
}

std::size_t allowedDistance(std::size_t length) {
    if (length <= 2)
        return 0;
    if (length <= 4)
        return 1;
    return length <= 8 ? 2 : 3;
}

std::vector<std::string> nearWords(std::string_view word,
                                   const std::vector<std::string>& candidates) {
    word = withoutDashes(word);
    // The bound falls with each better candidate, and those of before go.
    std::size_t nearest = allowedDistance(word.size());
    std::vector<std::string> words;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = editDistance(word, withoutDashes(candidate), nearest);
        if (distance > nearest)
            continue;
        if (distance < nearest)
            words.clear();
        nearest = distance;
        if (words.size() < mostWords)
            words.push_back(candidate);
    }
    return words;
}

std::string listOf(const std::vector<std::string>& words, std::string_view last) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0)
            text += i + 1 < words.size() ? ", " : " " + std::string(last) + " ";
        text += words[i];
    }
    return text;
}

std::string hintOf(const std::vector<std::string>& words) {
    return words.empty() ? std::string() : "; did you mean " + listOf(words, "or") + "?";
}

} // namespace kaz::detail
