// SPDX-License-Identifier: Apache-2.0
/// @file
/// Zones by their text.
#pragma once

#include <cstdint>
#include <string>

namespace kaz::dates {

/// The host's zone, universal time, or a fixed distance from it.
class Zone {
public:
    /// As datetime.h describes it; null is the local zone.
    explicit Zone(const char* text);
    /// A fixed offset in seconds east of UTC.
    explicit Zone(int offset) : kind_(fixed), offset_(offset) {}

    /// False for a text that is no zone; nothing else may be asked then.
    bool exists() const { return kind_ != none; }

    int offsetAt(std::int64_t seconds) const;
    /// The same with the abbreviation: "UTC", the host's, or "".
    int offsetAt(std::int64_t seconds, std::string& name) const;

    /// The moment of a local time, counted in seconds like one of UTC: of a repeated
    /// one the first, and one that is skipped by the offset before the change.
    std::int64_t momentOf(std::int64_t localSeconds) const;

private:
    enum Kind { none, local, universal, fixed };

    Kind kind_ = none;
    int offset_ = 0;
};

} // namespace kaz::dates
