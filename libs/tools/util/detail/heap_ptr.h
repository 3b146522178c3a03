// SPDX-License-Identifier: Apache-2.0
/// @file
/// Ownership of blocks that go with free.
#pragma once

#include <cstdlib>
#include <memory>

namespace kaz::detail {

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};

/// Frees a block from the malloc family; runs no destructor.
template <typename T>
using HeapPtr = std::unique_ptr<T, FreeBlock>;

} // namespace kaz::detail
