// SPDX-License-Identifier: Apache-2.0
/// @file
/// Loops over bytes that a machine with wide vectors runs many bytes at a time.
/// Each operation has a portable form and, where the processor has AVX2, a fast
/// one; which one runs is chosen at run time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kaz::host {

/// A set of byte values, in the form that asks fastest: up to four by
/// themselves, more in a table. There a byte's low half and its top bit choose
/// one of 32 entries, its other three bits a bit of that entry.
class ByteSet {
public:
    static constexpr std::size_t few = 4;

    ByteSet() = default;
    /// The bytes of a terminated text, which may be null.
    explicit ByteSet(const char* set) {
        if (set == nullptr || *set == '\0')
            return;
        members_[1] = members_[2] = members_[3] = *set;
        std::size_t n = 0;
        do
            members_[n] = set[n];
        while (++n < few && set[n] != '\0');
        size_ = n;
        if (n == few)
            for (set += few; *set != '\0'; ++set)
                insert(*set);
    }

    void insert(char c) {
        if (size_ == 0) // places that are not needed repeat a member
            members_[0] = members_[1] = members_[2] = members_[3] = c;
        else if (size_ < few)
            members_[size_] = c;
        else
            insertIntoTable(c);
        ++size_;
    }

    bool contains(char c) const {
        if (size_ > few)
            return (table_[slot(c)] & bit(c)) != 0;
        const auto is = [c](char member) { return static_cast<unsigned>(c == member); };
        return size_ > 0 &&
               (is(members_[0]) | is(members_[1]) | is(members_[2]) | is(members_[3])) != 0;
    }

    [[gnu::always_inline]] std::size_t size() const { return size_; }
    [[gnu::always_inline]] const char* members() const { return members_; }
    [[gnu::always_inline]] const std::uint8_t* table() const { return table_; }

private:
    static std::size_t slot(char c) {
        const auto code = static_cast<unsigned char>(c);
        return (code & 15U) | (code >> 3U & 16U);
    }
    static std::uint8_t bit(char c) {
        return static_cast<std::uint8_t>(1U << (static_cast<unsigned char>(c) >> 4U & 7U));
    }

    void insertIntoTable(char c);

    std::size_t size_ = 0;
    char members_[few] = {};
    std::uint8_t table_[32]; // filled once there are more than a few
};

/// The operations. A text is @p s and its length @p n; no byte outside it is
/// read, and NUL is a byte like any other.
struct ByteOperations {
    /// The index of the first byte that is in @p set; @p n when there is none.
    std::size_t (*findIn)(const char* s, std::size_t n, const ByteSet& set);
    /// The index of the first byte that is not in @p set; @p n when there is none.
    std::size_t (*findNotIn)(const char* s, std::size_t n, const ByteSet& set);
    /// The length that is left without the trailing bytes that are in @p set.
    std::size_t (*lengthWithout)(const char* s, std::size_t n, const ByteSet& set);
    /// The length up to and including the last byte that equals @p c; 0 when there
    /// is none.
    std::size_t (*lengthThrough)(const char* s, std::size_t n, char c);
    /// How many bytes equal @p c.
    std::size_t (*count)(const char* s, std::size_t n, char c);
    /// How many bytes are in @p set.
    std::size_t (*countIn)(const char* s, std::size_t n, const ByteSet& set);
    /// Writes the text to @p out, @p escape before each byte that is in @p set.
    /// @p out has room for exactly that and is not part of the text.
    void (*putEscaped)(char* out, const char* s, std::size_t n, const ByteSet& set, char escape);
    /// The index of the first byte of @p a that is NUL or differs from that of
    /// @p b, a letter of ASCII being the same in either case; @p n when there is
    /// none.
    std::size_t (*endOfSameNoCase)(const char* a, const char* b, std::size_t n);
    /// The first index from @p from on (up to @p end) where both @p first stands
    /// and, @p distance bytes behind it, @p last; @p end when there is none. The
    /// text reaches to @p end + @p distance at least.
    std::size_t (*findPair)(const char* s, std::size_t from, std::size_t end, char first, char last,
                            std::size_t distance);
    /// Such indexes in ascending order to @p indexes, as many as there are or have
    /// room; @p room is 32 at least. Returns how many, and moves @p from to where
    /// to go on, which is @p end when there are no more.
    std::size_t (*findPairs)(const char* s, std::size_t& from, std::size_t end, char first,
                             char last, std::size_t distance, std::int32_t* indexes,
                             std::size_t room);
    /// The index of the first byte that is in @p stops and neither behind an
    /// @p escape, nor part of a quote; @p n when there is none. A quote reaches from
    /// a byte in the terminated text @p quotes to the next one like it. An escape
    /// stands before quotes, quotes before other stops, and all of them are in
    /// @p stops.
    std::size_t (*findUnquoted)(const char* s, std::size_t n, const ByteSet& stops,
                                const char* quotes, char escape);
    /// The sum of the bytes, modulo 2^32, each shifted to the left by 7 bits
    /// more than the one before it, modulo 23.
    unsigned (*hash)(const char* s, std::size_t n);
    /// As endOfSameNoCase, and "/" is the same as "\\", too.
    std::size_t (*endOfSameName)(const char* a, const char* b, std::size_t n);
};

extern const ByteOperations portableBytes;

#if defined(__x86_64__)
extern const ByteOperations wideBytes;

/// Whether wideBytes runs on this processor.
inline bool hasWideBytes() {
    return __builtin_cpu_supports("avx2");
}

/// The operations to use.
inline const ByteOperations& bytes() {
    return hasWideBytes() ? wideBytes : portableBytes;
}
#else
inline const ByteOperations& bytes() {
    return portableBytes;
}
#endif

} // namespace kaz::host
