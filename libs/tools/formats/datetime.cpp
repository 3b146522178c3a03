// SPDX-License-Identifier: Apache-2.0
// A moment is a number of seconds from 1970 in UTC, and every field of a date follows from it and
// an offset. Only years of four digits exist here, so that sums of a moment and an offset are far
// from any limit. Fields are checked before anything is computed; nothing is written on failure.
#include "tools/formats/datetime.h"

#include "tools/formats/detail/calendar.h"
#include "tools/formats/detail/moment.h"
#include "tools/formats/detail/zones.h"
#include "tools/platform/host.h"

namespace {

using namespace kaz::dates;

constexpr int longestOffset = 23 * 3600 + 59 * 60;

bool isWithin(int value, int low, int high) {
    return low <= value && value <= high;
}

/// Every field but the offset.
bool exists(const date_parts& parts) {
    return kaz::dates::exists(Day{parts.year, parts.month, parts.day}) &&
           isWithin(parts.hour, 0, 23) && isWithin(parts.minute, 0, 59) &&
           isWithin(parts.second, 0, 59) && isWithin(parts.nanosecond, 0, 999'999'999);
}

/// As if the local time were UTC; the offset is subtracted by the caller.
std::int64_t localSeconds(const date_parts& parts) {
    return dayNumber({parts.year, parts.month, parts.day}) * secondsPerDay + parts.hour * 3600 +
           parts.minute * 60 + parts.second;
}

bool give(std::int64_t moment, std::int64_t& seconds) {
    if (!isMoment(moment))
        return false;
    seconds = moment;
    return true;
}

} // namespace

date_parts kaz::dates::partsOf(std::int64_t seconds, int offset) {
    const std::int64_t local = seconds + offset;
    // Rounded down, where the division rounds towards 0.
    const std::int64_t number = (local - (local < 0 ? secondsPerDay - 1 : 0)) / secondsPerDay;
    const auto second = static_cast<int>(local - number * secondsPerDay);
    const Day day = dayOf(number);
    return {day.year, day.month, day.day, second / 3600, second / 60 % 60, second % 60, 0, offset};
}

std::int64_t date_now(int* nanosecond) {
    int fraction = 0;
    const std::int64_t seconds = kaz::host::now(fraction);
    if (nanosecond != nullptr)
        *nanosecond = fraction;
    return seconds;
}

bool date_split(std::int64_t seconds, const char* zone, date_parts* parts) {
    const Zone place(zone);
    if (!isMoment(seconds) || !place.exists() || parts == nullptr)
        return false;
    *parts = partsOf(seconds, place.offsetAt(seconds));
    return true;
}

bool date_join(const date_parts* parts, std::int64_t* seconds) {
    return parts != nullptr && seconds != nullptr && exists(*parts) &&
           isWithin(parts->offset, -longestOffset, longestOffset) &&
           give(localSeconds(*parts) - parts->offset, *seconds);
}

/// The zone decides, and not the offset among the parts.
bool date_join(const date_parts* parts, const char* zone, std::int64_t* seconds) {
    const Zone place(zone);
    return parts != nullptr && seconds != nullptr && exists(*parts) && place.exists() &&
           give(place.momentOf(localSeconds(*parts)), *seconds);
}

int date_weekday(int year, int month, int day) {
    const Day date{year, month, day};
    return kaz::dates::exists(date) ? weekdayOf(dayNumber(date)) : -1;
}

int date_month_length(int year, int month) {
    return monthLength(year, month);
}
