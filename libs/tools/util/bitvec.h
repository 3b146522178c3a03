// SPDX-License-Identifier: Apache-2.0
/// @file
/// Bit vectors of a fixed size.
///
/// A null vector reads as having no bits, and an index outside 0..size reads as
/// clear; setting one does nothing. Nothing here prints or throws.
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

/// A vector with the bits 0..@p n, all clear; a negative @p n counts as 0.
/// Null when there is no memory; nothing leaks then. `bitvec_delete` it.
KAZ_API _bvs_* bitvec_new(int n);

/// Releases the vector. Null is ignored.
KAZ_API void bitvec_delete(_bvs_* bv);

/// A vector of the same size and bits; null for null or without memory.
KAZ_API _bvs_* bitvec_copy(const _bvs_* bv);

/// Sets bit @p i, or clears it.
KAZ_API void bitvec_set(_bvs_* bv, int i);
KAZ_API void bitvec_unset(_bvs_* bv, int i);

/// Sets bit @p i when @p val is non-zero, clears it otherwise.
KAZ_API void bitvec_put_val(_bvs_* bv, int i, int val);

/// Whether bit @p i is set.
KAZ_API bool bitvec_is_set(const _bvs_* bv, int i);

/// Clears every bit.
KAZ_API void bitvec_clear(_bvs_* bv);

/// 1 when no bit is set, else 0; 0 also for null.
KAZ_API int bitvec_is_all_clear(const _bvs_* bv);

/// The lowest clear bit. With all valid bits set, the first spare bit, size + 1,
/// is the answer, or -1 when the last word has none to spare; -1 for null.
KAZ_API int bitvec_find_unset(const _bvs_* bv);

/// 0 when both have the same size and bits, 1 otherwise, also when one is null.
/// No order.
KAZ_API int bitvec_compare(const _bvs_* a, const _bvs_* b);

/// The same for the bits between @p from, taken as 0 at least, and @p to, taken
/// as size at most, both included; the two change places when the first is then
/// the greater. Indices beyond size read as clear.
KAZ_API int bitvec_compare_sub(const _bvs_* a, const _bvs_* b, int from, int to);
