// SPDX-License-Identifier: Apache-2.0
/// @file
/// A configuration that may be missing.
#pragma once

#include "tools/config/toolinfo.h"

#include <cstdio>

namespace kaz::detail {

/// TI_Vcont(@p name) where there is a ToolInfo file; else null, and the missing file is no
/// fatal error: for what a tool can do without.
inline const char* optionalVariable(const char* name) {
    std::FILE* const file = _TI_Cfile();
    if (file == nullptr)
        return nullptr;
    std::fclose(file);
    return TI_Vcont(name);
}

} // namespace kaz::detail
