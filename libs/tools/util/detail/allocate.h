// SPDX-License-Identifier: Apache-2.0
/// @file
/// Allocation that fails the way `operator new` does.
#pragma once

#include <cstddef>

namespace kaz::detail {

/// What follows an allocation that failed, before it is tried again: the
/// installed new-handler, which frees memory or throws; KazMemoryException when
/// none is installed.
void handleAllocationFailure();

/// @p size bytes from malloc. While none are to be had, calls the installed
/// new-handler and tries again; throws KazMemoryException when none is
/// installed. Never null, also for size 0. Release with std::free.
void* allocate(std::size_t size);

/// The same, zero-filled.
void* allocateZeroed(std::size_t size);

/// realloc under the same rule: when it throws, @p block is untouched and
/// still the caller's. A null @p block is a plain allocation.
void* reallocate(void* block, std::size_t size);

} // namespace kaz::detail
