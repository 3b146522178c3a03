// SPDX-License-Identifier: Apache-2.0
#include "tools/util/detail/allocate.h"

#include "tools/app/exceptions/KazMemoryException.h"

#include <cstdlib>
#include <new>

namespace kaz::detail {

void handleAllocationFailure() {
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr)
        throw KazMemoryException();
    handler();
}

void* allocate(std::size_t size) {
    for (;;) {
        if (void* block = std::malloc(size > 0 ? size : 1))
            return block;
        handleAllocationFailure();
    }
}

void* allocateZeroed(std::size_t size) {
    for (;;) {
        if (void* block = std::calloc(size > 0 ? size : 1, 1))
            return block;
        handleAllocationFailure();
    }
}

void* reallocate(void* block, std::size_t size) {
    // realloc(p, 0) may free p; one byte keeps "untouched or replaced" true.
    const std::size_t wanted = size > 0 ? size : 1;
    for (;;) {
        if (void* result = std::realloc(block, wanted))
            return result;
        handleAllocationFailure();
    }
}

} // namespace kaz::detail
