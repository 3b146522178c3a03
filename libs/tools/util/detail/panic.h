/// @file
/// Allocation for the plain functions, which report failure by their name.
#pragma once

#include <cstddef>

namespace kaz::detail {

/// @p size bytes from malloc, at least one. When there are none, calls
/// memory_panic(@p functionName). Release with std::free.
void* allocateOrPanic(std::size_t size, const char* functionName);

/// The same, zero-filled.
void* allocateZeroedOrPanic(std::size_t size, const char* functionName);

/// realloc under the same rule; a failed one leaves @p block untouched.
void* reallocateOrPanic(void* block, std::size_t size, const char* functionName);

} // namespace kaz::detail
