// SPDX-License-Identifier: Apache-2.0
/// @file
/// The language in which a test tells the probe what to do with settings.
#pragma once

#include <string>
#include <vector>

namespace settings_test {

/// Any bytes as one word.
inline std::string word(const std::string& bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string result = "x";
    for (const char c : bytes) {
        result += digits[static_cast<unsigned char>(c) >> 4];
        result += digits[static_cast<unsigned char>(c) & 15];
    }
    return result;
}

inline std::string bytesOf(const std::string& word) {
    std::string result;
    for (std::size_t i = 1; i + 1 < word.size(); i += 2)
        result += static_cast<char>(std::stoi(word.substr(i, 2), nullptr, 16));
    return result;
}

/// A list's values as one word.
inline std::string word(const std::vector<std::string>& list) {
    std::string result = ",";
    for (const std::string& each : list)
        result += word(each) + ",";
    return result;
}

inline std::vector<std::string> listOf(const std::string& word) {
    std::vector<std::string> result;
    for (std::size_t at = 1, end; (end = word.find(',', at)) != word.npos; at = end + 1)
        result.push_back(bytesOf(word.substr(at, end - at)));
    return result;
}

} // namespace settings_test
