// SPDX-License-Identifier: Apache-2.0
/// @file
/// The printf conversions in a text.
#pragma once

#include <string>

/// The arguments that printf would take for @p text, as its conversions with
/// their length modifiers, in the order of the arguments: "%s %ld". A "*" is a
/// "%d". Two texts with the same result can stand for one another; what printf
/// makes no sense of shows in the result, so that such a text equals no good one.
std::string printfArguments(const std::string& text);
