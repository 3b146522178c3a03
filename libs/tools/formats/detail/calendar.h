// SPDX-License-Identifier: Apache-2.0
/// @file
/// The proleptic Gregorian calendar and the week calendar of ISO 8601, in whole days
/// numbered from 1970-01-01. Years are -1 to 10001; the arithmetic is the C++
/// library's.
#pragma once

#include <chrono>
#include <cstdint>

namespace kaz::dates {

inline constexpr std::int64_t secondsPerDay = 86400;
inline constexpr int lastYear = 10000; ///< of local dates; the first one is 0

/// A day by its names.
struct Day {
    int year = 1970;
    int month = 1; ///< 1 to 12
    int day = 1;   ///< 1 to 31
};

/// A week of ISO 8601, which begins on Monday.
struct Week {
    int year = 1970;
    int week = 1; ///< 1 to 53
};

/// 28 to 31; 0 for a month that is none.
constexpr int monthLength(int year, int month) {
    if (month == 2)
        return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0) ? 29 : 28;
    if (month < 1 || month > 12)
        return 0;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

constexpr bool exists(const Day& day) {
    return day.year >= 0 && day.year <= lastYear && day.day >= 1 &&
           day.day <= monthLength(day.year, day.month);
}

constexpr std::int64_t dayNumber(const Day& day) {
    return std::chrono::sys_days(std::chrono::year(day.year) /
                                 std::chrono::month(static_cast<unsigned>(day.month)) /
                                 std::chrono::day(static_cast<unsigned>(day.day)))
        .time_since_epoch()
        .count();
}

constexpr Day dayOf(std::int64_t number) {
    const std::chrono::year_month_day day{
        std::chrono::sys_days(std::chrono::days(static_cast<int>(number)))};
    return {static_cast<int>(day.year()), static_cast<int>(static_cast<unsigned>(day.month())),
            static_cast<int>(static_cast<unsigned>(day.day()))};
}

/// 0 for Sunday to 6 for Saturday.
constexpr int weekdayOf(std::int64_t number) {
    // 1970-01-01 was a Thursday; the sum stays positive over all years.
    return static_cast<int>((number + 4 + 7 * 200'000) % 7);
}

/// The Monday of the week that holds 4 January, and so is the year's first.
constexpr std::int64_t firstMonday(int year) {
    const std::int64_t fourth = dayNumber({year, 1, 4});
    return fourth - (weekdayOf(fourth) + 6) % 7;
}

constexpr int weeksIn(int year) {
    return static_cast<int>(firstMonday(year + 1) - firstMonday(year)) / 7;
}

constexpr Week weekOf(std::int64_t number) {
    int year = dayOf(number).year;
    if (number < firstMonday(year))
        --year;
    else if (number >= firstMonday(year + 1))
        ++year;
    return {year, static_cast<int>(number - firstMonday(year)) / 7 + 1};
}

} // namespace kaz::dates
