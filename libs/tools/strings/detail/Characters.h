// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the runtime library offers for each width of character.
#pragma once

#include "tools/platform/case_map.h"
#include "tools/platform/processor/vector.h"
#include "tools/util/detail/allocate.h"
#include "tools/util/detail/compare_no_case.h"
#include "tools/util/detail/compared.h"
#include "tools/util/detail/or_empty.h"
#include "tools/util/detail/within.h"
#include "tools/util/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwctype>

namespace kaz::detail {

/// Operations on terminated and counted texts; no text is null.
template <class Ch>
struct Characters;

template <>
struct Characters<char> {
    static std::size_t length(const char* s) { return std::strlen(s); }

    /// Byte order up to the first difference or NUL: -1, 0 or 1.
    static int compare(const char* a, const char* b) { return signOf(std::strcmp(a, b)); }
    static int compareN(const char* a, const char* b, std::size_t n) {
        return std::strncmp(a, b, n);
    }
    static int compareNoCase(const char* a, const char* b) { return kaz_fast_stricmp(a, b); }
    /// The same where @p n characters of both can be read, the terminator of the
    /// shorter one included.
    static int compareNoCase(const char* a, const char* b, std::size_t n) {
        // The C library's is ahead until vectors have made up for their start.
        return n < 512 ? signOf(host::compareLowered(a, b)) : kaz::detail::compareNoCase(a, b, n);
    }

    /// The first @p c among @p n characters, or null.
    static const char* find(const char* s, std::size_t n, char c) {
        return static_cast<const char*>(std::memchr(s, static_cast<unsigned char>(c), n));
    }

    /// The index of the last @p c among @p n characters, or -1.
    static std::ptrdiff_t findLast(const char* s, std::size_t n, char c) {
        return static_cast<std::ptrdiff_t>(host::bytes().lengthThrough(s, n, c)) - 1;
    }

    static std::size_t count(const char* s, std::size_t n, char c) {
        return host::bytes().count(s, n, c);
    }
    /// Whether there is a place among the first @p end from @p from on where
    /// @p first stands and @p last @p distance characters behind it; else @p end.
    static std::size_t findPair(const char* s, std::size_t from, std::size_t end, char first,
                                char last, std::size_t distance) {
        return host::bytes().findPair(s, from, end, first, last, distance);
    }

    /// Such places from @p from on to @p indexes, as many as there are or have
    /// room, which is 32 at least. Returns how many, and moves @p from to where to
    /// go on, which is @p end when there are no more.
    static std::size_t findPairs(const char* s, std::size_t& from, std::size_t end, char first,
                                 char last, std::size_t distance, std::int32_t* indexes,
                                 std::size_t room) {
        return host::bytes().findPairs(s, from, end, first, last, distance, indexes, room);
    }

    /// The mappings of case, for one call.
    static host::CaseMap upper() { return host::CaseMap::upper(); }
    static host::CaseMap lower() { return host::CaseMap::lower(); }
    static void apply(const host::CaseMap& map, char* s, std::size_t n) { map.apply(s, s, n); }

    /// The value that hashes and sets see.
    static unsigned code(char c) { return static_cast<unsigned char>(c); }

    /// A heap copy, released with `free`.
    static char* duplicate(const char* s) { return mkcpy(s); }
};

template <>
struct Characters<unsigned short> {
    using Ch = unsigned short;

    static std::size_t length(const Ch* s) {
        const Ch* end = s;
        while (*end != 0)
            ++end;
        return static_cast<std::size_t>(end - s);
    }

    static int compare(const Ch* a, const Ch* b) {
        while (*a == *b && *a != 0) {
            ++a;
            ++b;
        }
        return compared(*a, *b);
    }

    static int compareN(const Ch* a, const Ch* b, std::size_t n) {
        for (; n > 0; --n, ++a, ++b) {
            if (*a != *b)
                return *a < *b ? -1 : 1;
            if (*a == 0)
                break;
        }
        return 0;
    }

    static int compareNoCase(const Ch* a, const Ch* b) {
        while (lowered(*a) == lowered(*b) && *a != 0) {
            ++a;
            ++b;
        }
        return compared(lowered(*a), lowered(*b));
    }
    static int compareNoCase(const Ch* a, const Ch* b, std::size_t) { return compareNoCase(a, b); }

    static const Ch* find(const Ch* s, std::size_t n, Ch c) {
        const Ch* const end = s + n;
        const Ch* const hit = std::find(s, end, c);
        return hit != end ? hit : nullptr;
    }

    static std::ptrdiff_t findLast(const Ch* s, std::size_t n, Ch c) {
        auto i = static_cast<std::ptrdiff_t>(n) - 1;
        while (i >= 0 && s[i] != c)
            --i;
        return i;
    }

    static std::size_t count(const Ch* s, std::size_t n, Ch c) {
        return static_cast<std::size_t>(std::count(s, s + n, c));
    }
    static std::size_t findPair(const Ch* s, std::size_t from, std::size_t end, Ch first, Ch last,
                                std::size_t distance) {
        while (from < end && (s[from] != first || s[from + distance] != last))
            ++from;
        return from;
    }

    static std::size_t findPairs(const Ch* s, std::size_t& from, std::size_t end, Ch first, Ch last,
                                 std::size_t distance, std::int32_t* indexes, std::size_t room) {
        std::size_t found = 0;
        while (found < room && (from = findPair(s, from, end, first, last, distance)) < end)
            indexes[found++] = static_cast<std::int32_t>(from++);
        return found;
    }

    static auto upper() { return raised; }
    static auto lower() { return lowered; }
    static void apply(Ch (*map)(Ch), Ch* s, std::size_t n) { std::transform(s, s + n, s, map); }
    static unsigned code(Ch c) { return c; }

    static Ch* duplicate(const Ch* s) {
        const std::size_t size = (length(s) + 1) * sizeof(Ch);
        return static_cast<Ch*>(std::memcpy(allocate(size), s, size));
    }

private:
    static Ch raised(Ch c) { return narrowed(std::towupper(c), c); }
    static Ch lowered(Ch c) { return narrowed(std::towlower(c), c); }
    /// A mapping that leaves the 16-bit range is none.
    static Ch narrowed(std::uint32_t mapped, Ch original) {
        return mapped <= 0xFFFF ? static_cast<Ch>(mapped) : original;
    }
};

/// A counted piece of text.
template <class Ch>
struct Text {
    const Ch* data;
    std::ptrdiff_t length;

    static Text of(const Ch* s) {
        return {s, s != nullptr ? static_cast<std::ptrdiff_t>(Characters<Ch>::length(s)) : 0};
    }
    const Ch* begin() const { return data; }
    const Ch* end() const { return data + length; }
};

/// Copies @p s to @p out and returns the end of the copy. An empty text may
/// have a null pointer; the ranges may overlap.
template <class Ch>
Ch* put(Ch* out, Text<Ch> s) {
    if (s.length > 0)
        std::memmove(out, s.data, static_cast<std::size_t>(s.length) * sizeof(Ch));
    return out + s.length;
}

/// How far putInSteps() may read and write beyond the end.
template <class Ch>
inline constexpr std::ptrdiff_t stepLength = 32 / sizeof(Ch);

/// put() for a short text that does not overlap its copy: in whole steps, which
/// saves the call that finds out how to copy that many.
template <class Ch>
Ch* putInSteps(Ch* out, Text<Ch> s) {
    for (std::ptrdiff_t i = 0; i < s.length; i += stepLength<Ch>)
        std::memcpy(out + i, s.data + i, stepLength<Ch> * sizeof(Ch));
    return out + s.length;
}

} // namespace kaz::detail
