// SPDX-License-Identifier: Apache-2.0
// The test programs' own operator new and delete, over malloc_hooks.cpp.
#include "testkit/detail/alloc_hooks.h"

#include <cstddef>
#include <cstdlib>
#include <new>

void moxkit::detail::installHooks() {}

// A conforming operator new: the sanitizers' own ends the process on failure
// instead of running the new-handler.
void* operator new(std::size_t size) {
    for (;;) {
        if (void* block = std::malloc(size > 0 ? size : 1))
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
