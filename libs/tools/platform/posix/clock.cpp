// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/host_clock.h"

#include <ctime>

namespace kaz::host {

std::chrono::steady_clock::time_point lastTick() {
#ifdef CLOCK_MONOTONIC_COARSE
    timespec time{};
    if (::clock_gettime(CLOCK_MONOTONIC_COARSE, &time) == 0)
        return std::chrono::steady_clock::time_point(std::chrono::seconds(time.tv_sec) +
                                                     std::chrono::nanoseconds(time.tv_nsec));
#endif
    return std::chrono::steady_clock::now();
}

} // namespace kaz::host
