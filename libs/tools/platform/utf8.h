// SPDX-License-Identifier: Apache-2.0
/// @file
/// UTF-8, looked at byte by byte.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kaz::host {

/// What stands at the front of a text: a character, or bytes that are none.
struct Utf8Step {
    std::size_t length; ///< of the character, or of the longest part of one that is broken off
    bool isValid;
};

/// The first step of @p text, which is not empty. After the table "Well-Formed UTF-8 Byte
/// Sequences" of the Unicode Standard, and its practice for what stands for broken ones.
inline Utf8Step utf8Step(std::string_view text) {
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = at(0);
    if (lead < 0x80)
        return {1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {1, false};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    for (std::size_t i = 1; i < length; ++i, low = 0x80, high = 0xBF)
        if (i == text.size() || at(i) < low || at(i) > high)
            return {i, false};
    return {length, true};
}

/// How many bytes at the front of @p text are ASCII.
inline std::size_t asciiLength(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80)
        ++length;
    return length;
}

inline bool isUtf8(std::string_view text) {
    for (text.remove_prefix(asciiLength(text)); !text.empty();) {
        const Utf8Step step = utf8Step(text);
        if (!step.isValid)
            return false;
        text.remove_prefix(step.length);
    }
    return true;
}

/// @p text with U+FFFD for each part that is no character.
inline std::string validUtf8(std::string_view text) {
    if (isUtf8(text))
        return std::string(text);
    std::string result;
    while (!text.empty()) {
        const Utf8Step step = utf8Step(text);
        result += step.isValid ? text.substr(0, step.length) : std::string_view("\xEF\xBF\xBD");
        text.remove_prefix(step.length);
    }
    return result;
}

/// Is there a control character: U+0000 to U+001F, U+007F to U+009F? @p text is UTF-8.
inline bool hasControl(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const bool isHigh =
            c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (c < 0x20 || c == 0x7F || isHigh)
            return true;
    }
    return false;
}

} // namespace kaz::host
