// SPDX-License-Identifier: Apache-2.0
/// @file
/// Comparison without regard to case of texts whose length is known.
#pragma once

#include <cstddef>

namespace kaz::detail {

/// kaz_fast_stricmp() of two texts of which @p n characters can be read, the
/// terminator of the shorter one included.
int compareNoCase(const char* a, const char* b, std::size_t n);

} // namespace kaz::detail
