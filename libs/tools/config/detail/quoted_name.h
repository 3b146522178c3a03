// SPDX-License-Identifier: Apache-2.0
/// @file
/// Names from outside in the messages of this room.
#pragma once

#include "tools/formats/encode.h"
#include "tools/platform/host.h"

#include <cstdio>

namespace kaz::detail {

/// @p name as an error message quotes it: byte by byte, except where a terminal would read
/// the error channel. There no name begins a line of its own or moves the cursor.
inline KazString quotedName(const char* name) {
    return host::isTerminal(stderr) ? kazPrintable(name) : KazString(name);
}

} // namespace kaz::detail
