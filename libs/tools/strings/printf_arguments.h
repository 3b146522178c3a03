// SPDX-License-Identifier: Apache-2.0
/// @file
/// Which arguments a printf format takes.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// The arguments that printf would take for @p format (null counts as ""), as its
/// conversions with their length modifiers, in the order of the arguments: "%s %ld". "" for
/// none. A "*" is a "%d", a "%i" too; flags, widths and precisions below 1000, and the order
/// of "%2$s %1$d" do not show. Two formats with the same result can stand for one another;
/// what printf makes no sense of shows in the result, so that such a format equals no good
/// one. Costs time in proportion to its length.
///
/// @code
///   if (kazPrintfArguments(translated) == kazPrintfArguments("%s: %d files")) ...
/// @endcode
KAZ_API KazString kazPrintfArguments(const char* format);
