// SPDX-License-Identifier: Apache-2.0
/// @file
/// The parts of a pattern that names a directory and a wildcard in it.
#pragma once

#include <cstddef>

namespace kaz::detail {

/// Where the wildcard of a pattern begins: behind its last separator or its
/// drive. Other than in the path algebra a ":" elsewhere is part of a name here.
std::size_t wildcardStart(const char* pattern);

} // namespace kaz::detail
