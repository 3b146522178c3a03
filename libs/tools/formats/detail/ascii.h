// SPDX-License-Identifier: Apache-2.0
/// @file
/// Letters and digits of ASCII, whatever the locale says.
#pragma once

#include <string_view>

namespace kaz::dates {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char upperCase(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Equality without regard to the case of ASCII letters.
constexpr bool isSameText(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lowerCase(a[i]) != lowerCase(b[i]))
            return false;
    return true;
}

/// The number that digits spell; at most 18 of them.
constexpr long long numberOf(std::string_view digits) {
    long long number = 0;
    for (const char c : digits)
        number = 10 * number + (c - '0');
    return number;
}

} // namespace kaz::dates
