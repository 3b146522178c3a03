// SPDX-License-Identifier: Apache-2.0
/// @file
/// Small text helpers of the file functions.
#pragma once

#include "tools/strings/KazString.h"
#include "tools/strings/detail/Block.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

namespace kaz::detail {

inline bool isSeparator(char c) {
    return c == '\\' || c == '/';
}

/// The string that owns @p block, which nobody else does.
inline KazString owning(char* block) {
    // What holds a block can be used as the string that owns it.
    void* holder = block;
    return std::move(*static_cast<KazString*>(static_cast<void*>(&holder)));
}

/// A string of exactly @p length characters: @p write gets the place for them
/// and must not throw. One allocation; KazMemoryException when no string can be
/// that long.
template <typename Write>
KazString writtenText(std::size_t length, Write write) {
    if (length == 0)
        return KazString();
    const auto size = static_cast<std::int64_t>(length);
    char* const block = Block<char>::make(size, size);
    write(block);
    return owning(block);
}

inline KazString toText(std::string_view text) {
    const Text<char> characters{text.data(), static_cast<std::ptrdiff_t>(text.size())};
    return text.empty() ? KazString() : owning(Block<char>::make(characters));
}

inline char normalised(char c) {
    return c == '/' ? '\\' : c;
}

/// Writes @p text normalised to @p out and gives the end of it. A store for each
/// character, not only for those that change: such a loop becomes vector code.
inline char* writeNormalised(std::string_view text, char* out) {
    return std::transform(text.begin(), text.end(), out, normalised);
}

/// @p name below @p dir, joined plainly (no name is explicit here) with a
/// separator where one is needed, and normalised. One allocation of that length.
inline KazString joinPath(std::string_view dir, std::string_view name) {
    const bool between = !dir.empty() && !name.empty() && !isSeparator(dir.back());
    return writtenText(dir.size() + (between ? 1 : 0) + name.size(), [&](char* out) {
        out = writeNormalised(dir, out);
        if (between)
            *out++ = '\\';
        writeNormalised(name, out);
    });
}

} // namespace kaz::detail
