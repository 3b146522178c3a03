// SPDX-License-Identifier: Apache-2.0
/// @file
/// Between 16-bit text and the runtime's wide characters.
#pragma once

#include "tools/util/detail/heap_ptr.h"

#include <cstddef>

namespace kaz::detail {

/// A heap array of wide characters.
using WideBuffer = HeapPtr<wchar_t>;

/// The terminated 16-bit text @p s in the runtime's wide characters, where
/// these are wider with each surrogate pair as one. Null for a lone surrogate.
WideBuffer widened(const unsigned short* s);

/// The same with each lone surrogate as a character of its own; never null.
WideBuffer widenedAsIs(const unsigned short* s);

/// How many 16-bit units the @p n wide characters at @p s take.
std::size_t unitsOf(const wchar_t* s, std::size_t n);

/// Writes these units to @p out.
void putUnits(unsigned short* out, const wchar_t* s, std::size_t n);

/// Room for @p n wide characters and a terminator.
WideBuffer wideBuffer(std::size_t n);

} // namespace kaz::detail
