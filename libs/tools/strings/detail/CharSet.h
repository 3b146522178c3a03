// SPDX-License-Identifier: Apache-2.0
/// @file
/// Sets and maps of characters, built once for each call and then asked in
/// constant time for all characters below 256.
#pragma once

#include "tools/platform/processor/vector.h"
#include "tools/strings/detail/Characters.h"

#include <algorithm>
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

    /// Adds one character, which must be below 256.
    void insert(Ch c) { low_.set(Characters<Ch>::code(c)); }

    bool contains(Ch c) const {
        const unsigned code = Characters<Ch>::code(c);
        return code < low_.size()
                   ? low_[code]
                   : Characters<Ch>::find(all_.data, static_cast<std::size_t>(all_.length), c) !=
                         nullptr;
    }

    /// The index of the first character that is in the set; the length of the
    /// text when there is none.
    std::ptrdiff_t findIn(Text<Ch> text) const {
        return std::find_if(text.begin(), text.end(), [this](Ch c) { return contains(c); }) -
               text.begin();
    }

    /// The same for the first one that is not.
    std::ptrdiff_t findNotIn(Text<Ch> text) const {
        return std::find_if_not(text.begin(), text.end(), [this](Ch c) { return contains(c); }) -
               text.begin();
    }

    /// The length of the text without the trailing members.
    std::ptrdiff_t lengthWithout(Text<Ch> text) const {
        while (text.length > 0 && contains(text.data[text.length - 1]))
            --text.length;
        return text.length;
    }

    /// How many characters are in the set.
    std::ptrdiff_t countIn(Text<Ch> text) const {
        return std::count_if(text.begin(), text.end(), [this](Ch c) { return contains(c); });
    }

    /// Writes the text with @p escape before each member to @p out.
    void putEscaped(Ch* out, Text<Ch> text, Ch escape) const {
        for (const Ch c : text) {
            if (contains(c))
                *out++ = escape;
            *out++ = c;
        }
    }

private:
    Text<Ch> all_;
    std::bitset<256> low_;
};

/// The same for bytes, which all have a place in a set of their own.
template <>
class CharSet<char> {
public:
    explicit CharSet(const char* set) : set_(set) {}

    void insert(char c) { set_.insert(c); }
    bool contains(char c) const { return set_.contains(c); }
    std::ptrdiff_t findIn(Text<char> text) const {
        return index(bytes_.findIn(text.data, size(text), set_));
    }
    std::ptrdiff_t findNotIn(Text<char> text) const {
        return index(bytes_.findNotIn(text.data, size(text), set_));
    }
    std::ptrdiff_t lengthWithout(Text<char> text) const {
        return index(bytes_.lengthWithout(text.data, size(text), set_));
    }
    std::ptrdiff_t countIn(Text<char> text) const {
        return index(bytes_.countIn(text.data, size(text), set_));
    }
    void putEscaped(char* out, Text<char> text, char escape) const {
        bytes_.putEscaped(out, text.data, size(text), set_, escape);
    }

private:
    static std::ptrdiff_t index(std::size_t i) { return static_cast<std::ptrdiff_t>(i); }
    static std::size_t size(Text<char> text) { return static_cast<std::size_t>(text.length); }

    host::ByteSet set_;
    const host::ByteOperations& bytes_ = host::bytes();
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
