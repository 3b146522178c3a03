// SPDX-License-Identifier: Apache-2.0
// The malloc family over the C library's internal names: a definition in the
// program, or in what is preloaded into it, wins over the shared ones, for the
// library under test too. In the sanitizer builds they forward to the sanitizer's
// own.
#include "kit/detail/alloc_hooks.h"

#include <cstddef>

using kit::detail::shallFail;

#ifdef KIT_SANITIZED
#define KIT_REAL(name) __interceptor_##name
#else
#define KIT_REAL(name) __libc_##name
#endif

extern "C" {
void* KIT_REAL(malloc)(std::size_t);
void* KIT_REAL(calloc)(std::size_t, std::size_t);
void* KIT_REAL(realloc)(void*, std::size_t);
}

// Visible, or the library under test would not find them.
#pragma GCC visibility push(default)

extern "C" {

void* malloc(std::size_t size) {
    return shallFail() ? nullptr : KIT_REAL(malloc)(size);
}

void* calloc(std::size_t count, std::size_t size) {
    return shallFail() ? nullptr : KIT_REAL(calloc)(count, size);
}

void* realloc(void* block, std::size_t size) {
    return shallFail() ? nullptr : KIT_REAL(realloc)(block, size);
}

} // extern "C"

#pragma GCC visibility pop
