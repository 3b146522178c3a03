// SPDX-License-Identifier: Apache-2.0
/// @file
/// Finding one text in another, in linear time and without memory.
#pragma once

#include "tools/strings/detail/Characters.h"
#include "tools/util/detail/allocate.h"
#include "tools/util/detail/heap_ptr.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

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

/// Tries the places where characters of a text fit, which wins on ordinary text,
/// and says when near misses have cost more than that could save.
template <class Ch>
class Trial {
public:
    Trial(Text<Ch> wanted, std::ptrdiff_t start)
        : wanted_(wanted), start_(start), wasted_(-2 * wanted.length - 64 * perMiss) {}

    /// Whether the text stands at @p place.
    bool fits(Text<Ch> text, std::ptrdiff_t place) {
        const Ch* const found = text.data + place;
        std::ptrdiff_t same = 0;
        while (same < wanted_.length && wanted_.data[same] == found[same])
            ++same;
        if (same == wanted_.length)
            return true;
        wasted_ += same + perMiss;
        return false;
    }

    /// Whether, having come to @p place, one had better use the search that is
    /// linear in any case.
    bool isHard(std::ptrdiff_t place) const { return wasted_ > 4 * (place - start_); }

private:
    static constexpr std::ptrdiff_t perMiss = 16;

    Text<Ch> wanted_;
    std::ptrdiff_t start_;
    std::ptrdiff_t wasted_;
};

/// Characters that names, messages and prose hold few of.
class RareCharacters {
public:
    constexpr RareCharacters() {
        for (const char* c = " abcdefghiklmnoprstuvwy0123456789.,_-/\\\n\t"; *c != '\0'; ++c)
            isCommon_[static_cast<unsigned char>(*c)] = true;
    }
    constexpr bool contains(unsigned code) const {
        return code >= isCommon_.size() || !isCommon_[code];
    }

private:
    std::array<bool, 256> isCommon_{};
};
inline constexpr RareCharacters rareCharacters;

/// Where @p wanted has a rare character among its first ones; -1 for none.
template <class Ch>
std::ptrdiff_t rarePlaceIn(Text<Ch> wanted) {
    for (std::ptrdiff_t i = 0; i < wanted.length && i < 16; ++i)
        if (rareCharacters.contains(Characters<Ch>::code(wanted.data[i])))
            return i;
    return -1;
}

/// The index of the first occurrence of @p wanted (not empty) at or after
/// @p start (0 .. length), or -1.
template <class Ch>
std::ptrdiff_t findText(Text<Ch> text, Text<Ch> wanted, std::ptrdiff_t start) {
    if (wanted.length == 1)
        return findCharacter(text, *wanted.data, start);
    const std::ptrdiff_t end = text.length - wanted.length + 1;
    const std::ptrdiff_t distance = wanted.length - 1;
    Trial<Ch> trial(wanted, start);
    // A search for one character takes a third of the time, as long as it stays rare.
    if (const std::ptrdiff_t rare = rarePlaceIn(wanted); rare >= 0)
        for (int misses = 0; misses < 8; ++misses) {
            const std::ptrdiff_t i =
                findCharacter(Text<Ch>{text.data + rare, end}, wanted.data[rare], start);
            if (i < 0 || trial.fits(text, i))
                return i;
            start = i + 1;
        }
    for (std::ptrdiff_t i = start; i < end; ++i) {
        i = static_cast<std::ptrdiff_t>(Characters<Ch>::findPair(
            text.data, static_cast<std::size_t>(i), static_cast<std::size_t>(end), wanted.data[0],
            wanted.data[distance], static_cast<std::size_t>(distance)));
        if (i >= end)
            break;
        if (trial.fits(text, i))
            return i;
        if (trial.isHard(i))
            return TwoWaySearch<Ch>(wanted).find(text, i + 1);
    }
    return -1;
}

/// The indexes of all occurrences of a text, from left to right and without
/// overlap.
template <class Ch>
class Occurrences {
public:
    /// @p wanted is not empty.
    Occurrences(Text<Ch> text, Text<Ch> wanted) : text_(text), wanted_(wanted) {
        std::int32_t places[256];
        Trial<Ch> trial(wanted, 0);
        const std::ptrdiff_t distance = wanted.length - 1;
        const auto end =
            static_cast<std::size_t>(std::max<std::ptrdiff_t>(text.length - wanted.length + 1, 0));
        std::ptrdiff_t free = 0; // where the next one may begin
        for (std::size_t from = 0; from < end;) {
            const std::size_t count = Characters<Ch>::findPairs(
                text.data, from, end, wanted.data[0], wanted.data[distance],
                static_cast<std::size_t>(distance), places, std::size(places));
            for (std::size_t i = 0; i < count; ++i)
                if (places[i] >= free && trial.fits(text, places[i]))
                    free = add(places[i]);
            if (trial.isHard(static_cast<std::ptrdiff_t>(from))) {
                addAllFrom(std::max(free, static_cast<std::ptrdiff_t>(from)));
                return;
            }
        }
    }

    std::size_t size() const { return size_; }
    const std::int32_t* begin() const { return indexes_.get(); }
    const std::int32_t* end() const { return begin() + size_; }

private:
    /// Returns where the next one may begin.
    std::ptrdiff_t add(std::ptrdiff_t index) {
        if (size_ == room_) {
            const std::size_t room = std::max<std::size_t>(2 * room_, 64);
            void* const larger = reallocate(indexes_.get(), room * sizeof(std::int32_t));
            static_cast<void>(indexes_.release());
            indexes_.reset(static_cast<std::int32_t*>(larger));
            room_ = room;
        }
        indexes_.get()[size_++] = static_cast<std::int32_t>(index);
        return index + wanted_.length;
    }

    void addAllFrom(std::ptrdiff_t from) {
        const TwoWaySearch<Ch> search(wanted_);
        while ((from = search.find(text_, from)) >= 0)
            from = add(from);
    }

    Text<Ch> text_;
    Text<Ch> wanted_;
    HeapPtr<std::int32_t> indexes_;
    std::size_t size_ = 0;
    std::size_t room_ = 0;
};

} // namespace kaz::detail
