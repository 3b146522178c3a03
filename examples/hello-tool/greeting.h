// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/moxtools.h"

/// What this tool says to @p name.
inline KazString greeting(const char* name) {
    KazString text;
    text.format("Hello, %s.", name);
    return text;
}
