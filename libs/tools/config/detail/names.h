// SPDX-License-Identifier: Apache-2.0
/// @file
/// Building file names piece by piece and in buffers of fixed size.
#pragma once

#include "tools/strings/KazString.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace kaz::detail {

/// A project directory as it is meant: a "~" that a shell was kept from expanding
/// arrives with a backslash in front.
inline const char* withoutTildeEscape(const char* dir) {
    return std::strncmp(dir, "\\~", 2) == 0 ? dir + 1 : dir;
}

/// The directory of the current system, a leading "~" expanded: whatever is done to
/// it or in it means this one.
KazString systemDir();

/// Copies as much of @p text as fits with its terminator into @p size characters,
/// one at least. They may overlap.
inline void copyCut(char* buffer, std::size_t size, const char* text) {
    const std::size_t length = std::min(std::strlen(text), size - 1);
    std::memmove(buffer, text, length);
    buffer[length] = '\0';
}

/// Appends a component with a separator before it where there is none.
inline void appendPart(KazString& path, const char* part) {
    const int length = path.getLength();
    const char last = length > 0 ? path.getValue()[length - 1] : '\\';
    if (last != '\\' && last != '/')
        path += '\\';
    path += part;
}

} // namespace kaz::detail
