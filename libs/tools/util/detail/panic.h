// SPDX-License-Identifier: Apache-2.0
/// @file
/// Allocation for the plain functions, which report failure by their name.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace kaz::detail {

/// Tells whether memory_panic() shall name the function; null while there has been
/// nobody who could tell. Application objects install it.
using DebugQuestion = bool (*)();
extern DebugQuestion isDebugged;

/// @p size bytes from malloc, at least one. When there are none, calls
/// memory_panic(@p functionName). Release with std::free.
void* allocateOrPanic(std::size_t size, const char* functionName);

/// The same, zero-filled.
void* allocateZeroedOrPanic(std::size_t size, const char* functionName);

/// realloc under the same rule; a failed one leaves @p block untouched.
void* reallocateOrPanic(void* block, std::size_t size, const char* functionName);

/// Lets a standard container allocate under this rule. @p Owner names, in a
/// static member `functionName`, the function that is reported.
template <typename T, typename Owner>
struct PanicAllocator {
    using value_type = T;
    template <typename U>
    struct rebind {
        using other = PanicAllocator<U, Owner>;
    };

    PanicAllocator() = default;
    template <typename U>
    PanicAllocator(const PanicAllocator<U, Owner>&) {}

    T* allocate(std::size_t count) {
        return static_cast<T*>(allocateOrPanic(count * sizeof(T), Owner::functionName));
    }
    void deallocate(T* block, std::size_t) { std::free(block); }

    friend bool operator==(PanicAllocator, PanicAllocator) { return true; }
};

} // namespace kaz::detail
