// SPDX-License-Identifier: Apache-2.0
/// @file
/// Output of programs here as tests compare it.
#pragma once

#include <string>

namespace moxkit {

/// The text with each line ended by one newline, as text mode reads it.
inline std::string withoutReturns(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n')
            result += text[i];
    return result;
}

} // namespace moxkit
