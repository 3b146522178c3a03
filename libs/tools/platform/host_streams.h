// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a standard stream does to bytes. Beside host.h, whose conventions hold.
#pragma once

#include <cstdio>

namespace kaz::host {

/// From here on @p stream passes every byte as it is, line ends too. Nothing is in its
/// buffer yet. Where streams always do, nothing happens.
void passBytes(std::FILE* stream);

} // namespace kaz::host
