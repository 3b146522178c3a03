// SPDX-License-Identifier: Apache-2.0
// The malloc family over the C library's internal names: a definition in the
// program, or in what is preloaded into it, wins over the shared ones, for the
// library under test too. Where the program has an address sanitizer they forward
// to that one's.
#include "testkit/detail/alloc_hooks.h"

#include <cstddef>

using moxkit::detail::shallFail;

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
// Null without a sanitizer, whose allocations its own functions have to free.
[[gnu::weak]] void* __interceptor_malloc(std::size_t);
[[gnu::weak]] void* __interceptor_calloc(std::size_t, std::size_t);
[[gnu::weak]] void* __interceptor_realloc(void*, std::size_t);
}

// Visible, or the library under test would not find them.
#pragma GCC visibility push(default)

extern "C" {

void* malloc(std::size_t size) {
    if (shallFail())
        return nullptr;
    return __interceptor_malloc != nullptr ? __interceptor_malloc(size) : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    if (shallFail())
        return nullptr;
    return __interceptor_calloc != nullptr ? __interceptor_calloc(count, size)
                                           : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
    if (shallFail())
        return nullptr;
    return __interceptor_realloc != nullptr ? __interceptor_realloc(block, size)
                                            : __libc_realloc(block, size);
}

} // extern "C"

#pragma GCC visibility pop
