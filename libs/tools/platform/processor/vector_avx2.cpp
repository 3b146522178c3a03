// SPDX-License-Identifier: Apache-2.0
// The forms for AVX2, 32 bytes a step. The whole file is compiled for it, so it
// includes nothing with inline functions that other files might get from here.

#include "tools/platform/processor/vector.h"

#include <immintrin.h>

#if defined(__AVX2__)

namespace kaz::host {

namespace {

constexpr std::size_t step = 32;

__m256i load(const char* s) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
}

__m128i sixteen(const char* s) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
}

__m128i eight(const char* s) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s));
}

void store(char* s, __m256i v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(s), v);
}

/// A bit for each byte whose top bit is set.
unsigned maskOf(__m256i v) {
    return static_cast<unsigned>(_mm256_movemask_epi8(v));
}

unsigned firstOf(unsigned mask) {
    return static_cast<unsigned>(__builtin_ctz(mask));
}

/// Asks for up to four bytes at once.
/// Places without a member of their own repeat one, so all four are always asked. An empty set
/// would have a NUL in each, so callers rule it out.
class FewMembers {
public:
    explicit FewMembers(const ByteSet& set)
        : a_(_mm256_set1_epi8(set.members()[0])),
          b_(_mm256_set1_epi8(set.members()[1])),
          c_(_mm256_set1_epi8(set.members()[2])),
          d_(_mm256_set1_epi8(set.members()[3])) {}

    unsigned in(__m256i v) const {
        return maskOf(
            _mm256_or_si256(_mm256_or_si256(_mm256_cmpeq_epi8(v, a_), _mm256_cmpeq_epi8(v, b_)),
                            _mm256_or_si256(_mm256_cmpeq_epi8(v, c_), _mm256_cmpeq_epi8(v, d_))));
    }

private:
    __m256i a_, b_, c_, d_;
};

/// Asks a table.
class ManyMembers {
public:
    explicit ManyMembers(const ByteSet& set)
        : low_(half(set.table())), high_(half(set.table() + 16)) {}

    unsigned in(__m256i v) const {
        // A shuffle looks at the low half of a byte and gives 0 when its top bit
        // is set, so that each table answers for its own half of the values.
        const __m256i entry = _mm256_or_si256(
            _mm256_shuffle_epi8(low_, v),
            _mm256_shuffle_epi8(high_, _mm256_xor_si256(v, _mm256_set1_epi8(-128))));
        const __m256i upper = _mm256_and_si256(_mm256_srli_epi16(v, 4), _mm256_set1_epi8(15));
        const __m256i bit = _mm256_shuffle_epi8(bits_, upper);
        return ~maskOf(_mm256_cmpeq_epi8(_mm256_and_si256(entry, bit), _mm256_setzero_si256()));
    }

private:
    static __m256i half(const std::uint8_t* table) {
        return _mm256_broadcastsi128_si256(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(table)));
    }

    // Bit 1 << k for the upper half k; there are eight, and the index has 16 values, so the row
    // stands twice.
    __m256i bits_ = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201ULL));
    __m256i low_;
    __m256i high_;
};

/// The first byte that is in the set, or with @p flip all ones the first that is
/// not. The last step overlaps the one before it, which had no hit.
template <class Members>
std::size_t scan(const char* s, std::size_t n, const Members& members, unsigned flip) {
    for (std::size_t i = 0;; i += step) {
        if (i + step > n) {
            // The step before this one has reached the end, also when it overlapped.
            if (i >= n)
                return n;
            i = n - step;
        }
        const unsigned hits = members.in(load(s + i)) ^ flip;
        if (hits != 0)
            return i + firstOf(hits);
    }
}

std::size_t findIn(const char* s, std::size_t n, const ByteSet& set) {
    if (n < step || set.size() == 0)
        return portableBytes.findIn(s, n, set);
    return set.size() <= ByteSet::few ? scan(s, n, FewMembers(set), 0)
                                      : scan(s, n, ManyMembers(set), 0);
}

std::size_t findNotIn(const char* s, std::size_t n, const ByteSet& set) {
    if (n < step || set.size() == 0)
        return portableBytes.findNotIn(s, n, set);
    return set.size() <= ByteSet::few ? scan(s, n, FewMembers(set), ~0U)
                                      : scan(s, n, ManyMembers(set), ~0U);
}

template <class Members>
std::size_t scanBack(const char* s, std::size_t n, const Members& members) {
    for (; n >= step; n -= step) {
        // What is left below a step is for the caller, who must not read in front of the text.
        const unsigned kept = ~members.in(load(s + n - step));
        if (kept != 0)
            return n - static_cast<unsigned>(__builtin_clz(kept));
    }
    return n;
}

std::size_t lengthWithout(const char* s, std::size_t n, const ByteSet& set) {
    if (n >= step && set.size() > 0) {
        const std::size_t left = set.size() <= ByteSet::few ? scanBack(s, n, FewMembers(set))
                                                            : scanBack(s, n, ManyMembers(set));
        // A remainder of less than a step ends in a byte that stays, or was not looked at yet.
        if (left >= step)
            return left;
        n = left;
    }
    return portableBytes.lengthWithout(s, n, set);
}

/// The sum of the 32 bytes.
/// The instruction adds groups of eight bytes into 64 bits each, so that nothing overflows.
std::size_t sumOf(__m256i v) {
    const __m256i sums = _mm256_sad_epu8(v, _mm256_setzero_si256());
    const __m128i half =
        _mm_add_epi64(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
    return static_cast<std::size_t>(_mm_cvtsi128_si64(half) + _mm_extract_epi64(half, 1));
}

std::size_t lengthThrough(const char* s, std::size_t n, char c) {
    if (n < step)
        return portableBytes.lengthThrough(s, n, c);
    const __m256i wanted = _mm256_set1_epi8(c);
    const auto hits = [&](std::size_t end) {
        return _mm256_cmpeq_epi8(load(s + end - step), wanted);
    };
    const auto twice = [&](std::size_t end) {
        return _mm256_or_si256(hits(end), hits(end - step));
    };
    // Four steps with one test; the block that has a hit is searched again below.
    for (; n >= 4 * step; n -= 4 * step)
        if (maskOf(_mm256_or_si256(twice(n), twice(n - 2 * step))) != 0)
            break;
    // The last step overlaps the one before it, which had no hit.
    for (; n > 0; n = n > step ? n - step : 0) {
        const std::size_t end = n > step ? n : step;
        if (const unsigned mask = maskOf(hits(end)); mask != 0)
            return end - static_cast<unsigned>(__builtin_clz(mask));
    }
    return 0;
}

std::size_t count(const char* s, std::size_t n, char c) {
    const __m256i wanted = _mm256_set1_epi8(c);
    std::size_t total = 0;
    while (n >= step) {
        // Each byte of the counter gains at most 1 a step.
        __m256i counter = _mm256_setzero_si256();
        for (int i = 0; i < 255 && n >= step; ++i, s += step, n -= step)
            // A byte that is equal is all ones, which is -1.
            counter = _mm256_sub_epi8(counter, _mm256_cmpeq_epi8(load(s), wanted));
        total += sumOf(counter);
    }
    return total + portableBytes.count(s, n, c);
}

template <class Members>
std::size_t countMembers(const char*& s, std::size_t& n, const Members& members) {
    std::size_t total = 0;
    for (; n >= step; s += step, n -= step)
        total += static_cast<std::size_t>(__builtin_popcount(members.in(load(s))));
    return total;
}

std::size_t countIn(const char* s, std::size_t n, const ByteSet& set) {
    if (set.size() == 0)
        return 0;
    const std::size_t total = set.size() <= ByteSet::few ? countMembers(s, n, FewMembers(set))
                                                         : countMembers(s, n, ManyMembers(set));
    return total + portableBytes.countIn(s, n, set);
}

/// Writes what whole steps can, and moves @p out, @p s and @p n behind it.
template <class Members>
void escapeSteps(char*& out, const char*& s, std::size_t& n, const Members& members, char escape) {
    // A whole step is stored after each escape; what of it comes too early is
    // overwritten. The margin of a second step keeps that within both texts.
    for (; n >= 2 * step; s += step, n -= step) {
        const __m256i v = load(s);
        store(out, v);
        for (unsigned hits = members.in(v); hits != 0; hits &= hits - 1) {
            const unsigned i = firstOf(hits);
            out[i] = escape;
            ++out;
            store(out + i, load(s + i));
        }
        out += step;
    }
}

void putEscaped(char* out, const char* s, std::size_t n, const ByteSet& set, char escape) {
    if (set.size() > ByteSet::few)
        escapeSteps(out, s, n, ManyMembers(set), escape);
    else if (set.size() > 0)
        escapeSteps(out, s, n, FewMembers(set), escape);
    portableBytes.putEscaped(out, s, n, set, escape);
}

unsigned zeroesOf(__m256i v) {
    return maskOf(_mm256_cmpeq_epi8(v, _mm256_setzero_si256()));
}

/// 0 for each byte of @p a that is NUL or not the same as that of @p b.
struct SameNoCase {
    __m256i operator()(__m256i a, __m256i b) const {
        // A difference in the case bit counts for nothing where a byte is a letter. There the other
        // one is a letter, too, when nothing else differs.
        const __m256i caseBit = _mm256_set1_epi8('a' - 'A');
        // Shifted so that 'a' is the smallest signed byte, 26 values are letters.
        const __m256i shifted = _mm256_sub_epi8(_mm256_or_si256(a, caseBit),
                                                _mm256_set1_epi8(static_cast<char>('a' - 128)));
        const __m256i letter = _mm256_cmpgt_epi8(_mm256_set1_epi8(-128 + 26), shifted);
        const __m256i differ =
            _mm256_andnot_si256(_mm256_and_si256(letter, caseBit), _mm256_xor_si256(a, b));
        // The smaller of the byte and "equal", all ones or 0: it is 0 for a NUL and for a
        // difference.
        return _mm256_min_epu8(a, _mm256_cmpeq_epi8(differ, _mm256_setzero_si256()));
    }
};

struct SameName {
    static __m256i withOneSeparator(__m256i v) {
        const __m256i slashes = _mm256_cmpeq_epi8(v, _mm256_set1_epi8('/'));
        return _mm256_xor_si256(v, _mm256_and_si256(slashes, _mm256_set1_epi8('/' ^ '\\')));
    }
    __m256i operator()(__m256i a, __m256i b) const {
        return SameNoCase()(withOneSeparator(a), withOneSeparator(b));
    }
};

/// The first and the last half of a step of a text of 16 to 31 bytes, which overlap;
/// of 8 to 15 bytes the quarters, and behind them anything.
__m256i bothEnds(const char* s, std::size_t n) {
    return n >= step / 2
               ? _mm256_set_m128i(sixteen(s + n - step / 2), sixteen(s))
               : _mm256_castsi128_si256(_mm_unpacklo_epi64(eight(s), eight(s + n - step / 4)));
}

/// The end of what @p same finds to be so, in a text shorter than a step but not
/// shorter than a quarter of one.
template <class Same>
std::size_t endOfSameInShort(const char* a, const char* b, std::size_t n, Same same) {
    const std::size_t part = n >= step / 2 ? step / 2 : step / 4;
    // Below 16 bytes the upper half of the vector is not defined.
    const unsigned looked = part == step / 2 ? ~0U : 0xFFFFU;
    const unsigned ends = zeroesOf(same(bothEnds(a, n), bothEnds(b, n))) & looked;
    if (ends == 0)
        return n;
    const std::size_t i = firstOf(ends);
    // An index in the second part counts from the part's place, n - part. Where the parts overlap
    // the first one has told already.
    return i < part ? i : n - 2 * part + i;
}

/// The same in one of a step at least. The last step overlaps the one before it, which
/// had no end.
template <class Same>
std::size_t endOfSameInSteps(const char* a, const char* b, std::size_t n, Same same) {
    std::size_t i = 0;
    const auto sameAt = [&](std::size_t at) { return same(load(a + at), load(b + at)); };
    for (; i + 2 * step <= n; i += 2 * step)
        if (zeroesOf(_mm256_min_epu8(sameAt(i), sameAt(i + step))) != 0)
            break;
    for (; i < n; i += step) {
        if (i + step > n)
            i = n - step;
        const unsigned ends = zeroesOf(sameAt(i));
        if (ends != 0)
            return i + firstOf(ends);
    }
    return n;
}

std::size_t endOfSameNoCase(const char* a, const char* b, std::size_t n) {
    if (n < step / 4)
        return portableBytes.endOfSameNoCase(a, b, n);
    return n < step ? endOfSameInShort(a, b, n, SameNoCase())
                    : endOfSameInSteps(a, b, n, SameNoCase());
}

std::size_t endOfSameName(const char* a, const char* b, std::size_t n) {
    if (n < step / 4)
        return portableBytes.endOfSameName(a, b, n);
    return n < step ? endOfSameInShort(a, b, n, SameName()) : endOfSameInSteps(a, b, n, SameName());
}

std::size_t findPair(const char* s, std::size_t from, std::size_t end, char first, char last,
                     std::size_t distance) {
    const __m256i firsts = _mm256_set1_epi8(first);
    const __m256i lasts = _mm256_set1_epi8(last);
    const auto pairs = [&](std::size_t i) {
        return _mm256_and_si256(_mm256_cmpeq_epi8(load(s + i), firsts),
                                _mm256_cmpeq_epi8(load(s + i + distance), lasts));
    };
    for (; from + 2 * step <= end; from += 2 * step) {
        const __m256i a = pairs(from);
        const __m256i b = pairs(from + step);
        if (maskOf(_mm256_or_si256(a, b)) != 0) {
            const unsigned hits = maskOf(a);
            return hits != 0 ? from + firstOf(hits) : from + step + firstOf(maskOf(b));
        }
    }
    for (; from + step <= end; from += step) {
        const unsigned hits = maskOf(pairs(from));
        if (hits != 0)
            return from + firstOf(hits);
    }
    return portableBytes.findPair(s, from, end, first, last, distance);
}

std::size_t findPairs(const char* s, std::size_t& from, std::size_t end, char first, char last,
                      std::size_t distance, std::int32_t* indexes, std::size_t room) {
    const __m256i firsts = _mm256_set1_epi8(first);
    const __m256i lasts = _mm256_set1_epi8(last);
    std::size_t found = 0;
    for (; from + step <= end; from += step) {
        // A step may have 32 hits. The caller goes on at `from`, with the room empty again; it is
        // 32 at least, so that each call gets somewhere.
        if (found + step > room)
            return found;
        unsigned hits =
            maskOf(_mm256_and_si256(_mm256_cmpeq_epi8(load(s + from), firsts),
                                    _mm256_cmpeq_epi8(load(s + from + distance), lasts)));
        for (; hits != 0; hits &= hits - 1)
            indexes[found++] = static_cast<std::int32_t>(from + firstOf(hits));
    }
    return found + portableBytes.findPairs(s, from, end, first, last, distance, indexes + found,
                                           room - found);
}

bool isIn(const char* set, char c) {
    while (*set != '\0' && *set != c)
        ++set;
    return *set != '\0';
}

/// Walks over the stops alone; those within quotes are passed as quickly as the
/// quotes themselves.
template <class Members>
std::size_t scanUnquoted(const char* s, std::size_t n, const Members& stops, const char* quotes,
                         char escape) {
    bool isOpen = false;
    char quote = '\0';
    std::size_t escaped = n; // the byte behind the last escape, which stands for itself
    for (std::size_t i = 0; i < n; i += step) {
        unsigned hits = 0;
        if (n - i >= step) {
            hits = stops.in(load(s + i));
        } else {
            // Byte by byte, since nothing behind the text may be read; what fills the step up is
            // cut off the hits again.
            char rest[step] = {};
            for (std::size_t k = i; k < n; ++k)
                rest[k - i] = s[k];
            hits = stops.in(load(rest)) & ((1U << (n - i)) - 1);
        }
        for (; hits != 0; hits &= hits - 1) {
            const std::size_t at = i + firstOf(hits);
            const char c = s[at];
            // An escape may stand last in a step: what it covers is the first byte of the next one.
            if (at == escaped)
                continue;
            if (c == escape) {
                escaped = at + 1;
            } else if (isOpen) {
                isOpen = c != quote;
            } else if (isIn(quotes, c)) {
                isOpen = true;
                quote = c;
            } else {
                return at;
            }
        }
    }
    return n;
}

std::size_t findUnquoted(const char* s, std::size_t n, const ByteSet& stops, const char* quotes,
                         char escape) {
    return stops.size() <= ByteSet::few ? scanUnquoted(s, n, FewMembers(stops), quotes, escape)
                                        : scanUnquoted(s, n, ManyMembers(stops), quotes, escape);
}

constexpr std::size_t period = 23;

/// The shifts of eight periods, after which they meet the start of a group of
/// eight bytes again; one group more, for a part of one.
struct Shifts {
    alignas(32) std::int32_t of[8 * period + 8];

    constexpr Shifts() : of() {
        for (std::size_t i = 0; i < 8 * period + 8; ++i)
            of[i] = static_cast<std::int32_t>(i * 7 % period);
    }
};
constexpr Shifts shifts;

/// The eight bytes in @p group, each shifted as is right for index @p i.
__m256i shifted(__m128i group, std::size_t i) {
    const __m256i by = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(shifts.of + i));
    return _mm256_sllv_epi32(_mm256_cvtepu8_epi32(group), by);
}

/// The last @p rest (1 to 7) of the eight bytes before @p end, in front.
__m128i lastOfEight(const char* end, std::size_t rest) {
    return _mm_srl_epi64(eight(end - 8), _mm_cvtsi64_si128(static_cast<long long>(64 - 8 * rest)));
}

unsigned sumOfWords(__m256i v) {
    __m128i sum = _mm_add_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0x4E));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0xB1));
    return static_cast<unsigned>(_mm_cvtsi128_si32(sum));
}

/// Adds up the columns of rows of 23 bytes, all of which have one shift, as
/// long as a whole step can be read, and weighs the sums once. Moves @p s and
/// @p n behind the rows.
unsigned hashRows(const char*& s, std::size_t& n) {
    unsigned h = 0;
    while (n >= step) {
        // 257 rows of 255 are the most that 16 bits hold.
        __m256i even = _mm256_setzero_si256();
        __m256i odd = _mm256_setzero_si256();
        // The step reads 32 bytes for a row of 23; the others are added into columns that nobody
        // weighs.
        for (int row = 0; row < 257 && n >= step; ++row, s += period, n -= period) {
            const __m256i v = load(s);
            even = _mm256_add_epi16(even, _mm256_and_si256(v, _mm256_set1_epi16(255)));
            odd = _mm256_add_epi16(odd, _mm256_srli_epi16(v, 8));
        }
        std::uint16_t sums[2][16];
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums[0]), even);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums[1]), odd);
        for (std::size_t i = 0; i < period; ++i)
            h += static_cast<unsigned>(sums[i % 2][i / 2]) << shifts.of[i];
    }
    return h;
}

unsigned hash(const char* s, std::size_t n) {
    if (n < 8)
        return portableBytes.hash(s, n);
    // Below that the weighing costs more than the rows save.
    unsigned h = n >= 768 ? hashRows(s, n) : 0;
    __m256i sum = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; n >= 8; s += 8, n -= 8) {
        sum = _mm256_add_epi32(sum, shifted(eight(s), i));
        // Eight periods are a whole number of groups of eight, so the table begins again exactly
        // there.
        i = i + 8 < 8 * period ? i + 8 : 0;
    }
    if (n > 0)
        sum = _mm256_add_epi32(sum, shifted(lastOfEight(s + n, n), i));
    return h + sumOfWords(sum);
}

} // namespace

constinit const ByteOperations wideBytes = {
    findIn,          findNotIn, lengthWithout, lengthThrough, count, countIn,       putEscaped,
    endOfSameNoCase, findPair,  findPairs,     findUnquoted,  hash,  endOfSameName,
};

} // namespace kaz::host

#endif
