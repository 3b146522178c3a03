// SPDX-License-Identifier: Apache-2.0
#include "tools/util/memory.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/util/detail/panic.h"

#include <cstdio>
#include <cstdlib>

void memory_panic(const char* functionName) {
    if (kaz::detail::isDebugged != nullptr && kaz::detail::isDebugged())
        std::fprintf(stderr, "Memory allocation failed in function '%s', exiting.\n",
                     functionName != nullptr ? functionName : "(null)");
    throw KazMemoryException();
}

namespace kaz::detail {

constinit DebugQuestion isDebugged = nullptr;

void* allocateOrPanic(std::size_t size, const char* functionName) {
    return reallocateOrPanic(nullptr, size, functionName);
}

void* allocateZeroedOrPanic(std::size_t size, const char* functionName) {
    void* block = std::calloc(size > 0 ? size : 1, 1);
    if (block == nullptr)
        memory_panic(functionName);
    return block;
}

void* reallocateOrPanic(void* block, std::size_t size, const char* functionName) {
    void* result = std::realloc(block, size > 0 ? size : 1);
    if (result == nullptr)
        memory_panic(functionName);
    return result;
}

} // namespace kaz::detail
