// SPDX-License-Identifier: Apache-2.0
#include "tools/formats/detail/configured.h"

#include "tools/config/toolinfo.h"

#include <atomic>
#include <cstdio>

namespace kaz::dates {

namespace {

/// The files are read once; from then on none can be missed.
constinit std::atomic<bool> isRead = false;

bool isThere() {
    std::FILE* const file = _TI_Cfile();
    return file != nullptr && std::fclose(file) == 0;
}

} // namespace

const char* configured(const char* variable) {
    if (!isRead && !isThere())
        return nullptr;
    const char* const value = TI_Vcont(variable);
    isRead = true;
    return value;
}

} // namespace kaz::dates
