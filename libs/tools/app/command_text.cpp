// SPDX-License-Identifier: Apache-2.0
// An encoded text is plain in every shell and on every host: a prefix and two digits for each
// byte. What does not look like that stands for itself; what begins so and goes wrong inside is
// refused as "", because half of a command is another command.
#include "tools/app/detail/command_text.h"

#include <cstddef>
#include <cstring>
#include <string>

namespace kaz::detail {

namespace {

constexpr char prefix[] = "0x";
constexpr std::size_t prefixLength = sizeof prefix - 1;

/// 0 to 15, or -1 for a character that is no hexadecimal digit.
int digitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool looksEncoded(const char* value) {
    const std::size_t length = std::strlen(value);
    return std::strncmp(value, prefix, prefixLength) == 0 && length > prefixLength &&
           length % 2 == 0;
}

} // namespace

KazString encodeCommandText(const char* text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string result(prefix);
    for (; text != nullptr && *text != '\0'; ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        result += digits[byte >> 4];
        result += digits[byte & 15];
    }
    return result.c_str();
}

KazString decodeCommandText(const char* value) {
    if (value == nullptr || !looksEncoded(value))
        return value;
    std::string result;
    for (const char* pair = value + prefixLength; *pair != '\0'; pair += 2) {
        const int high = digitValue(pair[0]);
        const int low = digitValue(pair[1]);
        if (high < 0 || low < 0)
            return "";
        result += static_cast<char>(high << 4 | low);
    }
    return result.c_str();
}

} // namespace kaz::detail
