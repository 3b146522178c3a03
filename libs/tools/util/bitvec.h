// SPDX-License-Identifier: Apache-2.0
/// @file
/// Bit vectors of a fixed size.
///
/// A null vector reads as having no bits, and an index outside 0..size reads as
/// clear; setting one does nothing. Nothing here prints or throws. What takes less
/// time than a call does is inline.
#pragma once

#include "tools/export.h"

#include <cstdint>

/// Bit i is bit i % 32 (0 the least significant) of word i / 32. Bits of the
/// last word beyond `size` are clear.
struct _bvs_ {
    std::int32_t size;   ///< the highest index: there are size + 1 bits
    std::uint32_t* bits; ///< (size + 32) / 32 words, from malloc
};
/// The name that most callers use.
typedef _bvs_ bitvec;

namespace kaz::detail {

/// The lowest clear bit from that word on, or -1.
KAZ_API int findUnset(const _bvs_* bv, int word);

} // namespace kaz::detail

/// A vector with the bits 0..@p n, all clear; a negative @p n counts as 0.
/// Null when there is no memory; nothing leaks then. `bitvec_delete` it.
KAZ_API _bvs_* bitvec_new(int n);

/// Releases the vector. Null is ignored.
KAZ_API void bitvec_delete(_bvs_* bv);

/// A vector of the same size and bits; null for null or without memory.
KAZ_API _bvs_* bitvec_copy(const _bvs_* bv);

/// Whether bit @p i is set.
inline bool bitvec_is_set(const _bvs_* bv, int i) {
    return bv != nullptr && i >= 0 && i <= bv->size && (bv->bits[i / 32] >> i % 32 & 1U) != 0;
}

/// Sets bit @p i, or clears it.
inline void bitvec_set(_bvs_* bv, int i) {
    if (bv != nullptr && i >= 0 && i <= bv->size)
        bv->bits[i / 32] |= std::uint32_t{1} << i % 32;
}
inline void bitvec_unset(_bvs_* bv, int i) {
    if (bv != nullptr && i >= 0 && i <= bv->size)
        bv->bits[i / 32] &= ~(std::uint32_t{1} << i % 32);
}

/// Sets bit @p i when @p val is non-zero, clears it otherwise.
inline void bitvec_put_val(_bvs_* bv, int i, int val) {
    if (val != 0)
        bitvec_set(bv, i);
    else
        bitvec_unset(bv, i);
}

/// Clears every bit.
KAZ_API void bitvec_clear(_bvs_* bv);

/// 1 when no bit is set, else 0; 0 also for null.
KAZ_API int bitvec_is_all_clear(const _bvs_* bv);

/// The lowest clear bit. With all valid bits set, the first spare bit, size + 1,
/// is the answer, or -1 when the last word has none to spare; -1 for null.
inline int bitvec_find_unset(const _bvs_* bv) {
    if (bv == nullptr)
        return -1;
    const int words = bv->size / 32 + 1;
    constexpr int few = 16; // a call takes as long
    for (int word = 0; word < words && word < few; ++word)
        if (bv->bits[word] != 0xFFFFFFFFU)
            return word * 32 + __builtin_ctz(~bv->bits[word]);
    return words > few ? kaz::detail::findUnset(bv, few) : -1;
}

/// 0 when both have the same size and bits, 1 otherwise, also when one is null.
/// No order.
KAZ_API int bitvec_compare(const _bvs_* a, const _bvs_* b);

/// The same for the bits between @p from, taken as 0 at least, and @p to, taken
/// as size at most, both included; the two change places when the first is then
/// the greater. Indices beyond size read as clear.
KAZ_API int bitvec_compare_sub(const _bvs_* a, const _bvs_* b, int from, int to);
