// SPDX-License-Identifier: Apache-2.0
/// @file
/// Output of the form "name=value", line by line.
#pragma once

#include "kit/table.h"

#include <map>
#include <string>

namespace lines {

inline std::map<std::string, std::string> linesOf(const std::string& text) {
    std::map<std::string, std::string> result;
    for (const std::string& line : kit::lines(text))
        result[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
    return result;
}

} // namespace lines
