// SPDX-License-Identifier: Apache-2.0
/// @file
/// The printf conversions in a text.
#pragma once

#include "tools/strings/printf_arguments.h"

#include <string>

/// kazPrintfArguments for texts without a NUL.
inline std::string printfArguments(const std::string& text) {
    return kazPrintfArguments(text.c_str()).getValue();
}
