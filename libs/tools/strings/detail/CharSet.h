/// @file
/// Sets and maps of characters, built once for each call and then asked in
/// constant time for all characters below 256.
#pragma once

#include "tools/strings/detail/Characters.h"

#include <array>
#include <bitset>
#include <cstddef>

namespace kaz::detail {

/// The characters of a terminated text, which must outlive the set. NUL is
/// never a member.
template <class Ch>
class CharSet {
public:
    explicit CharSet(const Ch* set) : all_(Text<Ch>::of(set)) {
        for (const Ch c : all_)
            if (Characters<Ch>::code(c) < low_.size())
                low_.set(Characters<Ch>::code(c));
    }

    bool contains(Ch c) const {
        const unsigned code = Characters<Ch>::code(c);
        if constexpr (sizeof(Ch) > 1) {
            if (code >= low_.size())
                return all_.length > 0 &&
                       Characters<Ch>::find(all_.data, static_cast<std::size_t>(all_.length), c);
        }
        return low_[code];
    }

private:
    Text<Ch> all_;
    std::bitset<256> low_;
};

/// Maps the characters of one text to those at the same places of another, all
/// others to themselves. Both texts must outlive the map.
template <class Ch>
class CharMap {
public:
    CharMap(const Ch* from, const Ch* to) : from_(Text<Ch>::of(from)), to_(to) {
        for (std::size_t i = 0; i < low_.size(); ++i)
            low_[i] = static_cast<Ch>(i);
        // From the end, so that the first of several places decides.
        for (std::ptrdiff_t i = from_.length; i-- > 0;)
            if (Characters<Ch>::code(from[i]) < low_.size())
                low_[Characters<Ch>::code(from[i])] = to[i];
    }

    Ch operator()(Ch c) const {
        const unsigned code = Characters<Ch>::code(c);
        if constexpr (sizeof(Ch) > 1) {
            if (code >= low_.size()) {
                const Ch* const hit =
                    Characters<Ch>::find(from_.data, static_cast<std::size_t>(from_.length), c);
                return hit != nullptr ? to_[hit - from_.data] : c;
            }
        }
        return low_[code];
    }

private:
    Text<Ch> from_;
    const Ch* to_;
    std::array<Ch, 256> low_;
};

} // namespace kaz::detail
