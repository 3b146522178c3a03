// SPDX-License-Identifier: Apache-2.0
/// @file
/// How a text of any bytes travels as one command-line argument.
#pragma once

#include "tools/strings/KazString.h"

namespace kaz::detail {

/// "0x" and two upper-case hexadecimal digits for each byte of @p text.
KazString encodeCommandText(const char* text);

/// The text that @p value stands for: "0x" and one or more pairs of hexadecimal
/// digits are decoded (to nothing when a digit is none), anything else stands
/// for itself. Null counts as "".
KazString decodeCommandText(const char* value);

} // namespace kaz::detail
