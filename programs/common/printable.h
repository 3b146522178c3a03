// SPDX-License-Identifier: Apache-2.0
/// @file
/// Names and values from outside never drive the terminal.
#pragma once

#include "tools/formats/encode.h"

#include <string>

/// For messages: what a terminal would obey becomes visible (see kazPrintable).
inline std::string printable(const std::string& text) {
    return kazPrintable(text.c_str()).getValue();
}

/// Values of the environment and names of files may hold line ends, which would make
/// further lines of what is shown.
inline std::string onOneLine(const char* value) {
    std::string text = value != nullptr ? value : "";
    for (char& c : text)
        if (c == '\n' || c == '\r')
            c = ' ';
    return text;
}
