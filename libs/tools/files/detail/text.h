/// @file
/// Small text helpers of the file functions.
#pragma once

#include "tools/app/KazMemoryException.h"
#include "tools/strings/KazString.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>

namespace kaz::detail {

inline bool isSeparator(char c) {
    return c == '\\' || c == '/';
}

/// Null counts as "".
inline const char* textOf(const char* text) {
    return text != nullptr ? text : "";
}

/// Room for exactly @p length > 0 characters in the empty string @p text, whose
/// length it becomes. KazMemoryException when no string can be that long.
inline char* bufferOf(KazString& text, std::size_t length) {
    if (length > static_cast<std::size_t>(INT_MAX))
        throw KazMemoryException();
    text.getBuffer(static_cast<int>(length));
    text.releaseBuffer(static_cast<int>(length));
    return text.getBuffer(0);
}

inline KazString toText(std::string_view text) {
    KazString result;
    if (!text.empty())
        std::memcpy(bufferOf(result, text.size()), text.data(), text.size());
    return result;
}

/// @p name below @p dir, joined plainly (no name is explicit here) with a
/// separator where one is needed, and normalised. One allocation of that length.
inline KazString joinPath(std::string_view dir, std::string_view name) {
    const bool between = !dir.empty() && !name.empty() && !isSeparator(dir.back());
    const std::size_t length = dir.size() + (between ? 1 : 0) + name.size();
    KazString result;
    if (length == 0)
        return result;
    char* const text = bufferOf(result, length);
    char* out = std::copy(dir.begin(), dir.end(), text);
    if (between)
        *out++ = '\\';
    out = std::copy(name.begin(), name.end(), out);
    std::replace(text, out, '/', '\\');
    return result;
}

} // namespace kaz::detail
