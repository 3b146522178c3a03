// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/host.h"

#include <algorithm>
#include <windows.h>

namespace kaz::host {

namespace {

// FILETIME counts 100 ns from 1601.
constexpr std::int64_t ticksPerSecond = 10'000'000;
constexpr std::int64_t from1601To1970 = 11'644'473'600;
constexpr int longestOffset = 23 * 3600 + 59 * 60;

FILETIME fileTime(std::int64_t ticks) {
    return {static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
}

std::int64_t ticks(const FILETIME& time) {
    return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

} // namespace

std::int64_t now(int& nanosecond) {
    FILETIME time{};
    GetSystemTimePreciseAsFileTime(&time);
    const std::int64_t count = ticks(time);
    nanosecond = static_cast<int>(count % ticksPerSecond) * 100;
    return count / ticksPerSecond - from1601To1970;
}

// Each year has rules of its own. The one function that finds and applies them
// (SystemTimeToTzSpecificLocalTimeEx) is missing in Wine.
void localZone(std::int64_t seconds, int& offset, std::string& name) {
    name.clear();
    offset = 0;
    // A day later than the beginning, so that local times west of it exist, too.
    const std::int64_t since1601 = std::max<std::int64_t>(seconds + from1601To1970, 86400);
    const FILETIME moment = fileTime(since1601 * ticksPerSecond);
    SYSTEMTIME universal{}, local{};
    FILETIME shown{};
    TIME_ZONE_INFORMATION rules{};
    if (FileTimeToSystemTime(&moment, &universal) != 0 &&
        GetTimeZoneInformationForYear(universal.wYear, nullptr, &rules) != 0 &&
        SystemTimeToTzSpecificLocalTime(&rules, &universal, &local) != 0 &&
        SystemTimeToFileTime(&local, &shown) != 0)
        offset = static_cast<int>(ticks(shown) / ticksPerSecond - since1601);
    // The longest that is written as hours and minutes; a zone of the registry may hold anything.
    offset = std::clamp(offset, -longestOffset, longestOffset);
}

} // namespace kaz::host
