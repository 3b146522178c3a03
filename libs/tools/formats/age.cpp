// SPDX-License-Identifier: Apache-2.0
// The longest unit of which there is at least one, or two where one would be too coarse, tells
// the age. Counts are cut and not rounded: nothing is older than it is.
#include "tools/formats/datetime.h"

namespace {

struct Unit {
    const char* name;
    std::uint64_t from; ///< the shortest age that is told in it, in seconds
    std::uint64_t length;
};

constexpr std::uint64_t day = 86400;

constexpr Unit units[] = {
    {"year", 730 * day, 365 * day},
    {"month", 60 * day, 30 * day},
    {"week", 14 * day, 7 * day},
    {"day", day, day},
    {"hour", 3600, 3600},
    {"minute", 60, 60},
    {"second", 1, 1},
};

} // namespace

KazString FmtAge(std::int64_t seconds, std::int64_t now) {
    const bool isFuture = seconds > now;
    // Without sign, where no distance is too far.
    const auto there = static_cast<std::uint64_t>(seconds);
    const auto here = static_cast<std::uint64_t>(now);
    const std::uint64_t age = isFuture ? there - here : here - there;
    for (const Unit& unit : units) {
        if (age < unit.from)
            continue;
        const std::uint64_t count = age / unit.length;
        KazString text;
        text.format("%s%llu %s%s%s", isFuture ? "in " : "", static_cast<unsigned long long>(count),
                    unit.name, count != 1 ? "s" : "", isFuture ? "" : " ago");
        return text;
    }
    return "now";
}
