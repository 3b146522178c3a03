/// @file
/// Finding one text in another, in linear time and without memory.
#pragma once

#include "tools/strings/detail/Characters.h"

#include <algorithm>
#include <cstddef>

namespace kaz::detail {

/// Linear-time search by a critical factorization of the searched text: the
/// part right of the critical position is compared first, left to right, and a
/// mismatch there allows a shift by as many characters as were compared; a
/// mismatch on the left allows a shift by the period.
template <class Ch>
class TwoWaySearch {
public:
    explicit TwoWaySearch(Text<Ch> wanted) : x_(wanted.data), m_(wanted.length) {
        const Suffix up = maximalSuffix([](unsigned a, unsigned b) { return a < b; });
        const Suffix down = maximalSuffix([](unsigned a, unsigned b) { return a > b; });
        const Suffix& critical = up.before > down.before ? up : down;
        critical_ = critical.before;
        period_ = critical.period;
        periodic_ =
            critical_ + 1 + period_ <= m_ && std::equal(x_, x_ + critical_ + 1, x_ + period_);
        if (!periodic_)
            period_ = std::max(critical_ + 1, m_ - critical_ - 1) + 1;
    }

    /// The index of the first occurrence at or after @p j, or -1.
    std::ptrdiff_t find(Text<Ch> text, std::ptrdiff_t j) const {
        // With a periodic text, `known` characters minus one are already known
        // to match after a shift by the period.
        std::ptrdiff_t known = -1;
        while (j + m_ <= text.length) {
            const Ch* const y = text.data + j;
            std::ptrdiff_t i = std::max(critical_, known) + 1;
            while (i < m_ && x_[i] == y[i])
                ++i;
            if (i < m_) {
                j += i - critical_;
                known = -1;
                continue;
            }
            i = critical_;
            while (i > known && x_[i] == y[i])
                --i;
            if (i <= known)
                return j;
            j += period_;
            known = periodic_ ? m_ - period_ - 1 : -1;
        }
        return -1;
    }

private:
    struct Suffix {
        std::ptrdiff_t before; ///< index before the suffix
        std::ptrdiff_t period; ///< of the suffix
    };

    template <class Less>
    Suffix maximalSuffix(Less less) const {
        std::ptrdiff_t before = -1, candidate = 0, k = 1, period = 1;
        while (candidate + k < m_) {
            const unsigned a = Characters<Ch>::code(x_[candidate + k]);
            const unsigned b = Characters<Ch>::code(x_[before + k]);
            if (less(a, b)) {
                candidate += k;
                k = 1;
                period = candidate - before;
            } else if (a != b) {
                before = candidate++;
                k = period = 1;
            } else if (k != period) {
                ++k;
            } else {
                candidate += period;
                k = 1;
            }
        }
        return {before, period};
    }

    const Ch* x_;
    std::ptrdiff_t m_;
    std::ptrdiff_t critical_ = 0;
    std::ptrdiff_t period_ = 0;
    bool periodic_ = false;
};

/// The index of the first @p c at or after @p start (0 .. length), or -1.
template <class Ch>
std::ptrdiff_t findCharacter(Text<Ch> text, Ch c, std::ptrdiff_t start) {
    if (start >= text.length)
        return -1;
    const Ch* const hit =
        Characters<Ch>::find(text.data + start, static_cast<std::size_t>(text.length - start), c);
    return hit != nullptr ? hit - text.data : -1;
}

/// The index of the first occurrence of @p wanted (not empty) at or after
/// @p start (0 .. length), or -1.
template <class Ch>
std::ptrdiff_t findText(Text<Ch> text, Text<Ch> wanted, std::ptrdiff_t start) {
    const Text<Ch> candidates = {text.data, text.length - wanted.length + 1};
    // Jumping from one first character to the next wins on ordinary text. When
    // near misses have cost more than that could save, the search that is
    // linear in any case takes over.
    std::ptrdiff_t wasted = -2 * wanted.length - 64;
    for (std::ptrdiff_t i = start; (i = findCharacter(candidates, *wanted.data, i)) >= 0; ++i) {
        const auto differ = std::mismatch(wanted.begin(), wanted.end(), text.data + i).first;
        if (differ == wanted.end())
            return i;
        wasted += differ - wanted.begin();
        if (wasted > 4 * (i - start))
            return TwoWaySearch<Ch>(wanted).find(text, i + 1);
    }
    return -1;
}

} // namespace kaz::detail
