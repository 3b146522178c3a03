// SPDX-License-Identifier: Apache-2.0
// A conversion is read as a whole before anything of it is carried out. One that is not complete
// has no letter, and its text is then written as it stands; the result tells how much of the text
// was read.
#include "tools/formats/detail/conversion.h"

#include "tools/formats/detail/ascii.h"

#include <algorithm>

namespace kaz::dates {

namespace {

bool readFlag(char c, Conversion& result) {
    if (c == '-' || c == '_' || c == '0')
        result.padding = c;
    else if (c == '^')
        result.upper = true;
    else if (c == '#')
        result.other = true;
    else
        return false;
    return true;
}

/// Cut at a width that no field needs: a format may come from a file.
const char* readWidth(const char* at, int& width) {
    if (isDigit(*at))
        width = 0;
    for (; isDigit(*at); ++at)
        width = std::min(10 * width + (*at - '0'), widestField);
    return at;
}

} // namespace

/// The order is that of the C library: flags, width, modifier, colons, letter. E and O ask for
/// other calendars and digits, which no language here has, and so change nothing.
const char* readConversion(const char* text, Conversion& result) {
    const char* at = text;
    while (readFlag(*at, result))
        ++at;
    at = readWidth(at, result.width);
    if (*at == 'E' || *at == 'O')
        ++at;
    for (; *at == ':'; ++at)
        ++result.colons;
    // Colons belong to %z alone, three at most: in front of any other letter it is plain text.
    if (*at == '\0' || (result.colons != 0 && (*at != 'z' || result.colons > 3)))
        return at;
    result.letter = *at;
    return at + 1;
}

} // namespace kaz::dates
