/// @file
/// What the allocator has really given.
#pragma once

#include <cstddef>

#if defined(_WIN32) || defined(__linux__)
#include <malloc.h>
#endif

namespace kaz::host {

/// How many bytes of the malloc memory @p block may be used: what was asked for
/// or a little more. 0 on a host that does not tell.
inline std::size_t usableSize(void* block) {
#if defined(_WIN32)
    return _msize(block);
#elif defined(__linux__)
    return malloc_usable_size(block);
#else
    static_cast<void>(block);
    return 0;
#endif
}

} // namespace kaz::host
