// SPDX-License-Identifier: Apache-2.0
/// @file
/// Whether texts may have changed under those who hold them.
#pragma once

#include <atomic>
#include <cstdint>

namespace kaz::detail {

/// How often a text was changed in a block that several hold. Whoever keeps
/// something that was computed from held texts must look at them again when it has
/// grown.
inline constinit std::atomic<std::uint64_t> sharedTextWrites = 0;

} // namespace kaz::detail
