/// @file
/// What the runtime library offers for each width of character.
#pragma once

#include "tools/util/detail/allocate.h"
#include "tools/util/text.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
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
    static int compare(const char* a, const char* b) {
        const int order = std::strcmp(a, b);
        return (order > 0) - (order < 0);
    }
    static int compareN(const char* a, const char* b, std::size_t n) {
        return std::strncmp(a, b, n);
    }
    static int compareNoCase(const char* a, const char* b) { return kaz_fast_stricmp(a, b); }

    /// The first @p c among @p n characters, or null.
    static const char* find(const char* s, std::size_t n, char c) {
        return static_cast<const char*>(std::memchr(s, static_cast<unsigned char>(c), n));
    }

    static char upper(char c) {
        return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    static char lower(char c) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }

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
        return (*a > *b) - (*a < *b);
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
        while (lower(*a) == lower(*b) && *a != 0) {
            ++a;
            ++b;
        }
        return (lower(*a) > lower(*b)) - (lower(*a) < lower(*b));
    }

    static const Ch* find(const Ch* s, std::size_t n, Ch c) {
        const Ch* const end = s + n;
        const Ch* const hit = std::find(s, end, c);
        return hit != end ? hit : nullptr;
    }

    static Ch upper(Ch c) { return narrowed(std::towupper(c), c); }
    static Ch lower(Ch c) { return narrowed(std::towlower(c), c); }
    static unsigned code(Ch c) { return c; }

    static Ch* duplicate(const Ch* s) {
        const std::size_t size = (length(s) + 1) * sizeof(Ch);
        return static_cast<Ch*>(std::memcpy(allocate(size), s, size));
    }

private:
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

} // namespace kaz::detail
