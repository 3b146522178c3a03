// SPDX-License-Identifier: Apache-2.0
/// @file
/// Threads of Windows; see tools/platform/threads.h.
#pragma once

#include <cstdint>

namespace kaz::host {

/// A number that no other living thread has: even, and never 0.
std::uintptr_t thisThread();

/// Nothing here tells whether there are others.
inline bool isOnlyThread() {
    return false;
}

} // namespace kaz::host
