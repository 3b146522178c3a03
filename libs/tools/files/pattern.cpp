// SPDX-License-Identifier: Apache-2.0
#include "tools/files/detail/pattern.h"

#include "tools/files/kazpath.h"

#include <string_view>

namespace kaz::detail {

std::size_t wildcardStart(const char* pattern) {
    const std::size_t last = std::string_view(pattern).find_last_of("\\/");
    if (last != std::string_view::npos)
        return last + 1;
    return kazIsAbsolutePath(pattern) ? static_cast<std::size_t>(kazRootPartLength(pattern)) : 0;
}

} // namespace kaz::detail
