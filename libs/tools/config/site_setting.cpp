// SPDX-License-Identifier: Apache-2.0
// Rooms further down ask here for what a site has set, before anybody has looked a variable up
// and in programs that have no configuration at all. So the question must never be what reports
// that there is no configuration: where no file can be opened, the setting is simply not made.
#include "tools/util/detail/site_setting.h"

#include "tools/config/toolinfo.h"

#include <atomic>
#include <cstdio>

namespace kaz::detail {

namespace {

/// The files are read once; from then on none can be missed, and looking for one before
/// each lookup would cost more than the lookup.
constinit std::atomic<bool> isRead = false;

bool isThere() {
    std::FILE* const file = _TI_Cfile();
    return file != nullptr && std::fclose(file) == 0;
}

} // namespace

const char* siteSetting(const char* name) {
    if (!isRead && !isThere())
        return nullptr;
    const char* const value = TI_Vcont(name);
    isRead = true;
    return value;
}

const char* requiredSetting(const char* name) {
    return TI_Vcont(name);
}

} // namespace kaz::detail
