// SPDX-License-Identifier: Apache-2.0
/// @file
/// The host's clock and its local zone; part of host.h.
#pragma once

#include <cstdint>
#include <string>

namespace kaz::host {

/// The present moment in seconds since 1970-01-01T00:00:00 UTC; @p nanosecond
/// becomes its fraction.
std::int64_t now(int& nanosecond);

/// The local zone at a moment: @p offset becomes the seconds east of UTC (within a
/// minute of a day, further ones are cut), @p name the abbreviation in force then.
/// Moments are taken from years around -1 to 10001; any thread may ask.
///
/// On POSIX "TZ" names the zone, and its change counts with the next call. On
/// Windows the name is empty, "TZ" is not looked at, and before 1601 the offset of
/// 1601 holds.
void localZone(std::int64_t seconds, int& offset, std::string& name);

} // namespace kaz::host
