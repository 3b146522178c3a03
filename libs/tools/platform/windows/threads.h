// SPDX-License-Identifier: Apache-2.0
/// @file
/// Threads of Windows; see tools/platform/threads.h.
#pragma once

#include <atomic>
#include <cstdint>

namespace kaz::host {

/// A number that no other living thread has: even, and never 0.
std::uintptr_t thisThread();

/// Nothing here tells whether there are others.
inline bool isOnlyThread() {
    return false;
}

/// By the host's own calls: std::atomic::wait of this C++ library, which has no system call
/// here, now and then misses the wake-up and sleeps for ever.
void waitWhile(std::atomic<std::uintptr_t>& word, std::uintptr_t value);
void wakeOne(std::atomic<std::uintptr_t>& word);

} // namespace kaz::host
