// SPDX-License-Identifier: Apache-2.0
// The portable forms: plain loops, which the compiler may make vectors of.

#include "tools/platform/processor/vector.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace kaz::host {

namespace {

std::size_t findIn(const char* s, std::size_t n, const ByteSet& set) {
    std::size_t i = 0;
    while (i < n && !set.contains(s[i]))
        ++i;
    return i;
}

std::size_t findNotIn(const char* s, std::size_t n, const ByteSet& set) {
    std::size_t i = 0;
    while (i < n && set.contains(s[i]))
        ++i;
    return i;
}

std::size_t lengthWithout(const char* s, std::size_t n, const ByteSet& set) {
    while (n > 0 && set.contains(s[n - 1]))
        --n;
    return n;
}

std::size_t lengthThrough(const char* s, std::size_t n, char c) {
    while (n > 0 && s[n - 1] != c)
        --n;
    return n;
}

std::size_t count(const char* s, std::size_t n, char c) {
    return static_cast<std::size_t>(std::count(s, s + n, c));
}

std::size_t countIn(const char* s, std::size_t n, const ByteSet& set) {
    return static_cast<std::size_t>(
        std::count_if(s, s + n, [&](char c) { return set.contains(c); }));
}

void putEscaped(char* out, const char* s, std::size_t n, const ByteSet& set, char escape) {
    for (std::size_t i = 0; i < n; ++i) {
        if (set.contains(s[i]))
            *out++ = escape;
        *out++ = s[i];
    }
}

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::size_t endOfSameNoCase(const char* a, const char* b, std::size_t n) {
    std::size_t i = 0;
    while (i < n && a[i] != '\0' && lowered(a[i]) == lowered(b[i]))
        ++i;
    return i;
}

char inName(char c) {
    return c == '/' ? '\\' : lowered(c);
}

std::size_t endOfSameName(const char* a, const char* b, std::size_t n) {
    std::size_t i = 0;
    while (i < n && a[i] != '\0' && inName(a[i]) == inName(b[i]))
        ++i;
    return i;
}

std::size_t findPair(const char* s, std::size_t from, std::size_t end, char first, char last,
                     std::size_t distance) {
    while (from < end) {
        // The C library searches by vectors also where this file is compiled without them.
        const void* const hit =
            std::memchr(s + from, static_cast<unsigned char>(first), end - from);
        if (hit == nullptr)
            return end;
        from = static_cast<std::size_t>(static_cast<const char*>(hit) - s);
        // Within the text, which reaches to end + distance.
        if (s[from + distance] == last)
            return from;
        ++from;
    }
    return end;
}

std::size_t findPairs(const char* s, std::size_t& from, std::size_t end, char first, char last,
                      std::size_t distance, std::int32_t* indexes, std::size_t room) {
    std::size_t found = 0;
    while (found < room && (from = findPair(s, from, end, first, last, distance)) < end)
        indexes[found++] = static_cast<std::int32_t>(from++);
    return found;
}

bool isIn(const char* set, char c) {
    while (*set != '\0' && *set != c)
        ++set;
    return *set != '\0';
}

std::size_t findUnquoted(const char* s, std::size_t n, const ByteSet& stops, const char* quotes,
                         char escape) {
    bool isOpen = false;
    char quote = '\0';
    for (std::size_t i = 0; i < n; ++i) {
        const char c = s[i];
        // An escape at the very end has nothing behind it; the index then passes n, and the loop
        // ends all the same.
        if (c == escape) {
            ++i;
        } else if (isOpen) {
            isOpen = c != quote;
        } else if (isIn(quotes, c)) {
            isOpen = true;
            quote = c;
        } else if (stops.contains(c)) {
            return i;
        }
    }
    return n;
}

/// One round of the 23 shifts, unrolled: with constants it runs several times
/// as fast as a loop that computes them.
template <std::size_t... I>
unsigned hashRound(const char* s, std::index_sequence<I...>) {
    return ((static_cast<unsigned>(static_cast<unsigned char>(s[I])) << (I * 7 % 23)) + ...);
}

unsigned hash(const char* s, std::size_t n) {
    unsigned h = 0;
    for (; n >= 23; s += 23, n -= 23)
        h += hashRound(s, std::make_index_sequence<23>());
    for (std::size_t i = 0, shift = 0; i < n; ++i, shift = (shift + 7) % 23)
        h += static_cast<unsigned>(static_cast<unsigned char>(s[i])) << shift;
    return h;
}

} // namespace

void ByteSet::insertIntoTable(char c) {
    const auto enter = [this](char member) {
        table_[slot(member)] = static_cast<std::uint8_t>(table_[slot(member)] | bit(member));
    };
    // The table holds nothing before that, not even zeroes: small sets, which most are, do not pay
    // for it.
    if (size_ == few) {
        std::fill(std::begin(table_), std::end(table_), std::uint8_t{0});
        std::for_each(std::begin(members_), std::end(members_), enter);
    }
    enter(c);
}

constinit const ByteOperations portableBytes = {
    findIn,          findNotIn, lengthWithout, lengthThrough, count, countIn,       putEscaped,
    endOfSameNoCase, findPair,  findPairs,     findUnquoted,  hash,  endOfSameName,
};

} // namespace kaz::host
