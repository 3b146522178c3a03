// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/host_clock.h"

#include <windows.h>

namespace kaz::host {

std::chrono::steady_clock::time_point lastTick() {
    return std::chrono::steady_clock::time_point(std::chrono::milliseconds(GetTickCount64()));
}

} // namespace kaz::host
