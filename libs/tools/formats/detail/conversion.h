// SPDX-License-Identifier: Apache-2.0
/// @file
/// One conversion of a date format: flags, width and letter.
#pragma once

namespace kaz::dates {

inline constexpr int widestField = 255;

struct Conversion {
    char padding = 0;   ///< the last of the flags "-", "_" and "0"; 0: the letter's own
    bool upper = false; ///< "^"
    bool other = false; ///< "#"
    int width = -1;     ///< at most widestField; -1: the letter's own
    int colons = 0;
    char letter = 0;
};

/// Reads what follows a "%" at @p text. Gives the place behind the letter; where
/// there is no letter that could end the conversion, `letter` is NUL and the place
/// is that of the first character that does not belong to it.
const char* readConversion(const char* text, Conversion& result);

} // namespace kaz::dates
