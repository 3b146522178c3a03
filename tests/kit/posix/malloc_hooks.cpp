// The malloc family over the C library's internal names: a definition in the
// program, or in what is preloaded into it, wins over the shared ones, for the
// library under test too. In the sanitizer builds they forward to the sanitizer's
// own.
#include "kit/detail/alloc_hooks.h"

#include <cstddef>

using kit::detail::shallFail;

#ifdef KIT_SANITIZED

extern "C" {
void* __interceptor_malloc(std::size_t);
void* __interceptor_calloc(std::size_t, std::size_t);
void* __interceptor_realloc(void*, std::size_t);
}
#define KIT_MALLOC __interceptor_malloc
#define KIT_CALLOC __interceptor_calloc
#define KIT_REALLOC __interceptor_realloc

#else

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
}
#define KIT_MALLOC __libc_malloc
#define KIT_CALLOC __libc_calloc
#define KIT_REALLOC __libc_realloc

#endif

// Visible, or the library under test would not find them.
#pragma GCC visibility push(default)

extern "C" {

void* malloc(std::size_t size) {
    return shallFail() ? nullptr : KIT_MALLOC(size);
}

void* calloc(std::size_t count, std::size_t size) {
    return shallFail() ? nullptr : KIT_CALLOC(count, size);
}

void* realloc(void* block, std::size_t size) {
    return shallFail() ? nullptr : KIT_REALLOC(block, size);
}

} // extern "C"

#pragma GCC visibility pop
