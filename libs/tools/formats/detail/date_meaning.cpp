// SPDX-License-Identifier: Apache-2.0
// The order of the arithmetic: the date that is stated (else today), years and months,
// weeks and days, the time of day in the zone, and then hours, minutes and seconds of
// real time.
#include "tools/formats/detail/date_meaning.h"

#include "tools/formats/detail/moment.h"

#include <algorithm>

namespace kaz::dates {

namespace {

class Meaning {
public:
    Meaning(const Statement& statement, const Zone& zone, std::int64_t now)
        : statement_(statement), zone_(zone), now_(now) {}

    /// The result is written in part on failure; the caller hands out no more of it than errorAt.
    /// The result is written in part on failure; the caller hands out no more of it than errorAt.
    int find(partime_result& result) {
        if (const int status = findDate(); status != partime_ok) {
            result.errorAt = status == partime_conflict ? statement_.weekdayAt : 0;
            return status;
        }
        std::int64_t seconds = 0;
        if (!addCalendar() || !isMoment(seconds = findSeconds())) {
            result.errorAt = 0;
            return partime_range;
        }
        result.seconds = seconds;
        result.nanosecond = keepsTime() ? nowNanosecond_ : statement_.nanosecond;
        result.offset = zone_.offsetAt(seconds);
        return partime_ok;
    }

private:
    bool hasDate() const { return statement_.date != Statement::noDate || statement_.weekday >= 0; }
    /// Is the time of day that of now?
    bool keepsTime() const {
        return statement_.time == Statement::presentTime ||
               (statement_.time == Statement::noTime && !hasDate());
    }

    /// The present as the zone's clock shows it; asked for once.
    const date_parts& present() {
        if (!isPresentKnown_) {
            // A clock that is set to a year out of range gives the nearest moment that exists.
            // A clock that is set to a year out of range gives the nearest moment that exists.
            if (!isMoment(now_))
                now_ = std::clamp(date_now(&nowNanosecond_), date_min, date_max);
            present_ = partsOf(now_, zone_.offsetAt(now_));
            isPresentKnown_ = true;
        }
        return present_;
    }
    std::int64_t today() {
        const date_parts& now = present();
        return dayNumber({now.year, now.month, now.day});
    }

    /// A weekday beside a date is a check of it; alone it is the date.
    /// A weekday beside a date is a check of it; alone it is the date.
    int findDate() {
        Day day = statement_.day;
        if (statement_.date == Statement::dayOfSomeYear) {
            day.year = present().year;
            // 29 February in a year that has none.
            // 29 February in a year that has none.
            if (!exists(day))
                return partime_range;
        }
        const bool isStated =
            statement_.date == Statement::fullDate || statement_.date == Statement::dayOfSomeYear;
        day_ = isStated ? dayNumber(day) : today() + statement_.daysFromToday;
        if (statement_.weekday < 0)
            return partime_ok;
        if (statement_.date == Statement::noDate)
            day_ += daysToWeekday();
        else if (statement_.weekdayTurn != 0 || weekdayOf(day_) != statement_.weekday)
            return partime_conflict;
        return partime_ok;
    }

    /// From today; a week at most either way.
    int daysToWeekday() const {
        const int ahead = (statement_.weekday - weekdayOf(day_) + 7) % 7;
        if (statement_.weekdayTurn > 0)
            return ahead == 0 ? 7 : ahead;
        return statement_.weekdayTurn < 0 ? ahead - 7 : ahead;
    }

    /// False when that leads out of the calendar.
    bool addCalendar() {
        const Span& span = statement_.relative;
        if (span.months != 0 && !addMonths(span.months))
            return false;
        day_ += span.days;
        return day_ >= dayNumber({0, 1, 1}) && day_ <= dayNumber({lastYear, 12, 31});
    }

    bool addMonths(std::int64_t months) {
        Day day = dayOf(day_);
        const std::int64_t month = std::int64_t{12} * day.year + day.month - 1 + months;
        if (month < 0 || month / 12 > lastYear)
            return false;
        day.year = static_cast<int>(month / 12);
        day.month = static_cast<int>(month % 12) + 1;
        // 31 January and a month is the last of February: never a day of the month behind.
        // 31 January and a month is the last of February: never a day of the month behind.
        day.day = std::min(day.day, monthLength(day.year, day.month));
        day_ = dayNumber(day);
        return true;
    }

    /// Hours of real time come last: "2 hours" across a change of clocks are two hours, where
    /// "1 day" keeps the time that the clock shows.
    /// Hours of real time come last: "2 hours" across a change of clocks are two hours, where
    /// "1 day" keeps the time that the clock shows.
    std::int64_t findSeconds() {
        const Span& span = statement_.relative;
        // A clock that is put back shows a time twice; now is one of the two.
        if (keepsTime() && !hasDate() && span.months == 0 && span.days == 0)
            return now_ + span.seconds;
        int second = statement_.secondOfDay;
        if (keepsTime()) {
            const date_parts& now = present();
            second = now.hour * 3600 + now.minute * 60 + now.second;
        }
        return zone_.momentOf(day_ * secondsPerDay + second) + statement_.leapSecond + span.seconds;
    }

    const Statement& statement_;
    const Zone& zone_;
    std::int64_t now_;
    int nowNanosecond_ = 0;
    date_parts present_;
    bool isPresentKnown_ = false;
    std::int64_t day_ = 0; ///< the number of the local day
};

} // namespace

/// A zone in the text counts before the caller's, for every part of the date.
/// A zone in the text counts before the caller's, for every part of the date.
int findMeaning(const Statement& statement, Zone zone, std::int64_t now, partime_result& result) {
    if (statement.offset)
        zone = Zone(*statement.offset);
    result.given = statement.given;
    if (!statement.moment)
        return Meaning(statement, zone, now).find(result);
    result.seconds = *statement.moment;
    result.nanosecond = statement.nanosecond;
    result.offset = zone.offsetAt(result.seconds);
    return partime_ok;
}

} // namespace kaz::dates
