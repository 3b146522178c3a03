// SPDX-License-Identifier: Apache-2.0
/// @file
/// Rows of a table that a test goes through, many on a line.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kit {

/// The parts of @p text between its separators, blanks included; one more than there are
/// separators.
inline std::vector<std::string> parts(std::string_view text, std::string_view separator = "|") {
    std::vector<std::string> result;
    for (std::size_t end; (end = text.find(separator)) != text.npos;) {
        result.emplace_back(text.substr(0, end));
        text.remove_prefix(end + separator.size());
    }
    result.emplace_back(text);
    return result;
}

/// The lines of @p text; the last one may lack its end.
inline std::vector<std::string> lines(std::string_view text, std::string_view end = "\n") {
    std::vector<std::string> result = parts(text, end);
    if (result.back().empty())
        result.pop_back();
    return result;
}

/// The pairs of a text of the form "left = right | left = right".
inline std::vector<std::pair<std::string, std::string>> pairs(std::string_view text) {
    std::vector<std::pair<std::string, std::string>> result;
    for (const std::string& each : parts(text, " | ")) {
        const std::size_t middle = each.find(" = ");
        result.emplace_back(each.substr(0, middle), each.substr(middle + 3));
    }
    return result;
}

} // namespace kit
