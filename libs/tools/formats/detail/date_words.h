// SPDX-License-Identifier: Apache-2.0
/// @file
/// The words of dates: names of months and weekdays, units, zones.
#pragma once

#include "tools/formats/detail/languages.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace kaz::dates {

/// A length of time, forward or back. Months and days are those of the calendar.
struct Span {
    std::int64_t months = 0;
    std::int64_t days = 0;
    std::int64_t seconds = 0;

    constexpr Span operator*(std::int64_t n) const { return {months * n, days * n, seconds * n}; }
    constexpr Span& operator+=(const Span& o) {
        months += o.months;
        days += o.days;
        seconds += o.seconds;
        return *this;
    }
};

struct Unit {
    std::string_view name;
    Span length;
};

/// By its name, with or without "s" at the end; null for another word.
const Unit* findUnit(std::string_view word);

/// Seconds east of UTC, for the names that mean one offset only.
std::optional<int> findZone(std::string_view word);

/// 1 to 12; 0 for a word that names no month in English or the language in force. The
/// latter is asked for only when the word is not English.
int findMonth(std::string_view word);

/// 0 for Sunday to 6; -1 for a word that names none. A word that also names a month is
/// for findMonth().
int findWeekday(std::string_view word);

} // namespace kaz::dates
