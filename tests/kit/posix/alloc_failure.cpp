// The test programs' own malloc family over the C library's internal names: a
// definition in the program wins over the shared ones, for the library under
// test too. In the sanitizer builds they forward to the sanitizer's own.
#include "kit/detail/alloc_hooks.h"

#include <cstddef>
#include <cstdlib>
#include <new>

using kit::detail::shallFail;

void kit::detail::installHooks() {}

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

// A conforming operator new: the sanitizers' own ends the process on failure
// instead of running the new-handler.
void* operator new(std::size_t size) {
    for (;;) {
        if (void* block = malloc(size > 0 ? size : 1))
            return block;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr)
            throw std::bad_alloc();
        handler();
    }
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

// The sanitizers' own would not match the deletes below.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (...) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return operator new(size, std::nothrow);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
