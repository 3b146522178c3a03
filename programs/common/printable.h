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
