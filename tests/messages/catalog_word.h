/// @file
/// How the catalog's probe and its tests spell a text.
#pragma once

#include <string>

/// Blanks and control characters as two digits: pipes and line ends leave a word
/// alone on every platform.
inline std::string catalogWord(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += byte > ' ' && byte != '%'
                      ? std::string(1, c)
                      : "%" + std::to_string(byte / 10) + std::to_string(byte % 10);
    }
    return result + "\n";
}
