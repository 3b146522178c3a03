// SPDX-License-Identifier: Apache-2.0
// Bits behind the last valid one are always clear: copying, clearing and the search for any set
// bit then go by whole words. Only a comparison of parts needs masks, at its two ends.
#include "tools/util/bitvec.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr int wordBits = 32;
constexpr std::uint32_t fullWord = 0xFFFFFFFFU;

/// A vector has its size and one bit more, hence no rounding by wordBits - 1.
std::int64_t wordCount(std::int64_t size) {
    return (size + wordBits) / wordBits;
}

std::size_t byteCount(const _bvs_* bv) {
    return static_cast<std::size_t>(wordCount(bv->size)) * sizeof(std::uint32_t);
}

/// How many words at @p words, by blocks, have all bits set.
int fullWords(const std::uint32_t* words, int count) {
    // No branch inside a block: the compiler then uses vectors, which takes a
    // third of the time of one word after the other.
    constexpr int block = 32;
    int full = 0;
    for (; count - full >= block; full += block) {
        std::uint32_t all = fullWord;
        for (int i = 0; i < block; ++i)
            all &= words[full + i];
        if (all != fullWord)
            break;
    }
    return full;
}

/// The bits @p from..@p to of a word, both included.
/// Both shifts are by less than a word, for which alone they are defined.
std::uint32_t maskOf(int from, int to) {
    return (fullWord << from) & (fullWord >> (wordBits - 1 - to));
}

/// Whether the valid bits @p from..@p to agree: those of the words at both ends, and
/// all of those between.
bool agree(const _bvs_* a, const _bvs_* b, int from, int to) {
    const int first = from / wordBits;
    const int last = to / wordBits;
    const auto agreeIn = [a, b](int word, std::uint32_t mask) {
        return ((a->bits[word] ^ b->bits[word]) & mask) == 0;
    };
    if (first == last)
        return agreeIn(first, maskOf(from % wordBits, to % wordBits));
    // Between the two ends whole words are compared; words next to each other have none between.
    const auto between = static_cast<std::size_t>(last - first - 1) * sizeof(std::uint32_t);
    return agreeIn(first, maskOf(from % wordBits, wordBits - 1)) &&
           agreeIn(last, maskOf(0, to % wordBits)) &&
           std::memcmp(a->bits + first + 1, b->bits + first + 1, between) == 0;
}

} // namespace

/// Null rather than a panic: nothing here prints or throws.
_bvs_* bitvec_new(int n) {
    void* header = std::malloc(sizeof(_bvs_));
    if (header == nullptr)
        return nullptr;
    auto* bv = new (header) _bvs_{std::max(n, 0), nullptr};
    bv->bits = static_cast<std::uint32_t*>(
        std::calloc(static_cast<std::size_t>(wordCount(bv->size)), sizeof(std::uint32_t)));
    if (bv->bits == nullptr) {
        std::free(bv);
        return nullptr;
    }
    return bv;
}

void bitvec_delete(_bvs_* bv) {
    if (bv == nullptr)
        return;
    std::free(bv->bits);
    std::free(bv);
}

_bvs_* bitvec_copy(const _bvs_* bv) {
    _bvs_* copy = bv != nullptr ? bitvec_new(bv->size) : nullptr;
    if (copy != nullptr)
        std::memcpy(copy->bits, bv->bits, byteCount(bv));
    return copy;
}

void bitvec_clear(_bvs_* bv) {
    if (bv != nullptr)
        std::memset(bv->bits, 0, byteCount(bv));
}

int bitvec_is_all_clear(const _bvs_* bv) {
    if (bv == nullptr)
        return 0;
    const std::uint32_t* words = bv->bits;
    const auto isClear = [](std::uint32_t word) { return word == 0; };
    return std::all_of(words, words + wordCount(bv->size), isClear) ? 1 : 0;
}

int kaz::detail::findUnset(const _bvs_* bv, int word) {
    const auto words = static_cast<int>(wordCount(bv->size));
    for (word += fullWords(bv->bits + word, words - word); word < words; ++word)
        if (bv->bits[word] != fullWord)
            return word * wordBits + std::countr_one(bv->bits[word]);
    return -1;
}

int bitvec_compare(const _bvs_* a, const _bvs_* b) {
    return a != nullptr ? bitvec_compare_sub(a, b, 0, a->size) : 1;
}

int bitvec_compare_sub(const _bvs_* a, const _bvs_* b, int from, int to) {
    if (a == nullptr || b == nullptr || a->size != b->size)
        return 1;
    int low = std::max(from, 0);
    int high = std::min(to, static_cast<int>(a->size));
    if (low > high)
        std::swap(low, high);
    // What lies outside reads as clear on both sides.
    low = std::max(low, 0);
    high = std::min(high, static_cast<int>(a->size));
    return low > high || agree(a, b, low, high) ? 0 : 1;
}
