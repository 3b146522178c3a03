// SPDX-License-Identifier: Apache-2.0
// There are three kinds of zones: the user's, UTC, and a fixed distance from it. For the last two
// an offset is a constant; for the first the host is asked about each moment. A local time may
// name two moments, when clocks go back, or none, when they go forward: the earlier one is meant
// in the former case, and the offset before the change holds in the latter.
#include "tools/formats/detail/zones.h"

#include "tools/formats/detail/ascii.h"
#include "tools/formats/detail/calendar.h"
#include "tools/platform/host.h"
#include "tools/util/detail/or_empty.h"

#include <optional>
#include <string_view>

namespace kaz::dates {

namespace {

/// "+hh", "+hhmm" or "+hh:mm" in seconds.
std::optional<int> fixedOffset(std::string_view text) {
    if (text.size() < 3 || (text[0] != '+' && text[0] != '-'))
        return std::nullopt;
    std::string digits(text.substr(1));
    if (digits.size() == 5 && digits[2] == ':')
        digits.erase(2, 1);
    if ((digits.size() != 2 && digits.size() != 4) ||
        digits.find_first_not_of("0123456789") != digits.npos)
        return std::nullopt;
    const std::string_view all = digits;
    const auto hours = static_cast<int>(numberOf(all.substr(0, 2)));
    const auto minutes = static_cast<int>(numberOf(all.substr(2)));
    if (hours > 23 || minutes > 59)
        return std::nullopt;
    const int offset = hours * 3600 + minutes * 60;
    return text[0] == '-' ? -offset : offset;
}

} // namespace

Zone::Zone(const char* text) {
    const std::string_view name = kaz::detail::orEmpty(text);
    if (name.empty() || isSameText(name, "local")) {
        kind_ = local;
    } else if (isSameText(name, "UTC") || isSameText(name, "GMT") || isSameText(name, "Z")) {
        kind_ = universal;
    } else if (name.size() <= 6) { // so that nothing is allocated for the rest
        if (const std::optional<int> offset = fixedOffset(name)) {
            kind_ = fixed;
            offset_ = *offset;
        }
    }
}

int Zone::offsetAt(std::int64_t seconds) const {
    if (kind_ != local)
        return offset_;
    std::string name;
    return offsetAt(seconds, name);
}

int Zone::offsetAt(std::int64_t seconds, std::string& name) const {
    int offset = offset_;
    if (kind_ == local)
        host::localZone(seconds, offset, name);
    else
        name = kind_ == universal ? "UTC" : "";
    return offset;
}

std::int64_t Zone::momentOf(std::int64_t localSeconds) const {
    if (kind_ != local)
        return localSeconds - offset_;
    // Offsets lie within a day, and no zone changes twice within two.
    const int before = offsetAt(localSeconds - secondsPerDay);
    const int after = offsetAt(localSeconds + secondsPerDay);
    const std::int64_t first = localSeconds - before;
    const std::int64_t second = localSeconds - after;
    // The first moment counts when its offset really held then: clocks that go back show the
    // time twice, and this is the earlier one. When neither holds, the time does not exist.
    if (before == after || offsetAt(first) == before || offsetAt(second) != after)
        return first;
    return second;
}

} // namespace kaz::dates
