// SPDX-License-Identifier: Apache-2.0
/// @file
/// Threads of POSIX; see tools/platform/threads.h.
#pragma once

#include <atomic>
#include <cstdint>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#define KAZ_KNOWS_SINGLE_THREADED
#endif

namespace kaz::host {

/// Its address tells threads apart. Read without a call: the library may still be
/// loaded late, as the C library keeps room for a few such bytes.
[[gnu::tls_model("initial-exec")]] inline constinit thread_local std::int32_t threadMark = 0;

/// A number that no other living thread has: even, and never 0.
inline std::uintptr_t thisThread() {
    return reinterpret_cast<std::uintptr_t>(&threadMark);
}

inline bool isOnlyThread() {
#if defined(KAZ_KNOWS_SINGLE_THREADED)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
}

inline void waitWhile(const std::atomic<std::uintptr_t>& word, std::uintptr_t value) {
    word.wait(value);
}

inline void wakeOne(std::atomic<std::uintptr_t>& word) {
    word.notify_one();
}

} // namespace kaz::host
