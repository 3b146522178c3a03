// SPDX-License-Identifier: Apache-2.0
// Dates: which parts of an item are year, month and day.
#include "tools/formats/detail/date_items.h"

#include "tools/util/detail/or_empty.h"
#include "tools/util/detail/site_setting.h"
namespace kaz::dates {

namespace {

bool isWithin(int value, int low, int high) {
    return low <= value && value <= high;
}

/// A year of two digits, as POSIX reads it.
int fullYear(int year) {
    return year + (year >= 69 ? 1900 : 2000);
}

int yearOf(const Token& token) {
    return token.text().size() == 2 ? fullYear(token.value()) : token.value();
}

date_order_enum configuredOrder() {
    const char* value = kaz::detail::siteSetting("date_order");
    const std::string_view order = kaz::detail::orEmpty(value);
    return order == "dmy" ? date_order_dmy : order == "mdy" ? date_order_mdy : date_order_unknown;
}

} // namespace

// --------------------------------------------------------------------- what follows

/// The place behind a "." that belongs to the token before.
std::size_t ItemReader::skipDot(std::size_t ahead) const {
    return isGlued(ahead, '.') ? ahead + 1 : ahead;
}

/// The place behind "st", "nd", "rd", "th" or ".".
std::size_t ItemReader::skipOrdinal(std::size_t ahead) const {
    for (const char* ending : {"st", "nd", "rd", "th"})
        if (isGluedWord(ahead, ending))
            return ahead + 1;
    return skipDot(ahead);
}

bool ItemReader::isTimeBehindT(std::size_t ahead) const {
    return isGluedWord(ahead, "t") && isGluedNumber(ahead + 1);
}

/// A number of that many digits that is not the beginning of something else?
bool ItemReader::isYear(std::size_t ahead, std::size_t digits) const {
    if (!token(ahead).isNumber(digits))
        return false;
    // Glued to something else it is a beginning, as in "2024-01"; "2024T10" is the exception.
    // Glued to something else it is a beginning, as in "2024-01"; "2024T10" is the exception.
    if (!token(ahead + 1).isApart)
        return isTimeBehindT(ahead + 1);
    // "5 May 10 days" and "5 May 10 pm": the number belongs to what follows.
    // "5 May 10 days" and "5 May 10 pm": the number belongs to what follows.
    return !isUnit(ahead + 1) && !isHalf(ahead + 1);
}

std::optional<int> ItemReader::readYear(bool mayBeShort) {
    if (!isYear(0, 4) && !(mayBeShort && isYear(0, 2)))
        return std::nullopt;
    const int year = yearOf(token());
    ++next_;
    return year;
}

/// What may follow every complete date: "T" and a time, which in this form has all its digits.
/// What may follow every complete date: "T" and a time, which in this form has all its digits.
int ItemReader::finishDate(int status) {
    if (status != partime_ok || !isTimeBehindT(0))
        return status;
    ++next_;
    errorAt_ = token().at;
    if (isGlued(1, ':'))
        return token().isNumber(2) ? readClock() : partime_syntax;
    const std::string_view digits = token().text();
    const bool isClock = digits.size() == 2 || digits.size() == 4 || digits.size() == 6;
    return isClock ? readDigitClock(digits) : partime_syntax;
}

// ----------------------------------------------------------------- dates of digits

/// A number with "-", "/" or "." behind it.
int ItemReader::readPunctuated() {
    const char separator = token(1).text()[0];
    if (separator != '-' && separator != '/' && separator != '.')
        return partime_syntax;
    if (token().isNumber(4))
        return readYearFirst(separator);
    if (!token().isShortNumber())
        return partime_syntax;
    // "24.12." and "24.12.2024" or "24. December": the dot is an ordinal's in the latter.
    // "24.12." and "24.12.2024" or "24. December": the dot is an ordinal's in the latter.
    if (separator == '.')
        return isGluedNumber(2) ? readDayDotMonth() : readDayMonth();
    if (separator == '-' && token(2).kind == Token::word && !token(2).isApart)
        return readDayMonthYear();
    return readByOrder(separator);
}

/// Y-M-D with any separator; Y-MM, Y-DDD, Y-Www.
int ItemReader::readYearFirst(char separator) {
    const int year = token().value();
    const Token& second = token(2);
    const Token& third = token(4);
    if (separator == '-' && isGluedWord(2, "w"))
        return readWeekDate(year, 3, false);
    if (!isGluedNumber(2))
        return partime_syntax;
    // Both separators must agree: "2024-01/02" is more likely a mistake than a date.
    // Both separators must agree: "2024-01/02" is more likely a mistake than a date.
    if (isGlued(3, separator) && isGluedNumber(4)) {
        if (!second.isShortNumber() || !third.isShortNumber())
            return partime_syntax;
        next_ += 5;
        return setDate({year, second.value(), third.value()});
    }
    if (separator != '-' || (!second.isNumber(2) && !second.isNumber(3)))
        return partime_syntax;
    next_ += 3;
    return second.isNumber(2) ? setDate({year, second.value(), 1})
                              : setDayOfYear(year, second.value());
}

/// A week, whose number stands at @p week, with or without a day: "ww", "ww-D", or
/// "wwD" in one number.
int ItemReader::readWeekDate(int year, std::size_t week, bool isCompact) {
    const Token& digits = token(week);
    const bool hasDayBehind = isCompact && digits.isNumber(3);
    if (!isGluedNumber(week) || (!digits.isNumber(2) && !hasDayBehind))
        return partime_syntax;
    next_ += week + 1;
    int number = digits.value();
    int weekday = 1;
    if (hasDayBehind) {
        weekday = number % 10;
        number /= 10;
    } else if (!isCompact && isGlued(0, '-') && isGluedNumber(1) && token(1).isNumber(1)) {
        weekday = token(1).value();
        next_ += 2;
    }
    // Week 53 exists in some years only.
    // Week 53 exists in some years only.
    if (!isWithin(number, 1, weeksIn(year)) || !isWithin(weekday, 1, 7))
        return partime_range;
    // That day may lie in the year before or behind.
    // That day may lie in the year before or behind.
    return setDate(dayOf(firstMonday(year) + 7 * (number - 1) + weekday - 1));
}

/// D.M.Y, D.M.YY, D.M.
int ItemReader::readDayDotMonth() {
    const int day = token().value();
    const Token& month = token(2);
    if (!month.isShortNumber() || !isGlued(3, '.'))
        return partime_syntax;
    next_ += 4;
    std::optional<int> year;
    if (isGluedNumber(0)) {
        if (!token().isNumber(4) && !token().isNumber(2))
            return partime_syntax;
        year = yearOf(token());
        ++next_;
    }
    return setDate(month.value(), day, year);
}

/// D-Month-Y.
int ItemReader::readDayMonthYear() {
    const int month = findMonth(token(2).text());
    const std::size_t dash = skipDot(3);
    if (month == 0 || !isGlued(dash, '-') || !isGluedNumber(dash + 1) || !isYear(dash + 1, 4))
        return partime_syntax;
    // Out of range is found by setDate().
    // Out of range is found by setDate().
    const Day day{token(dash + 1).value(), month, token().value()};
    next_ += dash + 2;
    return setDate(day);
}

/// A/B/Y, A/B/YY, A/B, A-B-Y.
int ItemReader::readByOrder(char separator) {
    const Token& first = token();
    const Token& second = token(2);
    if (!isGluedNumber(2) || !second.isShortNumber())
        return partime_syntax;
    if (!isGlued(3, separator)) {
        next_ += 3;
        return separator == '/' ? setOrderedDate(first.value(), second.value(), std::nullopt)
                                : partime_syntax;
    }
    const Token& third = token(4);
    if (!isGluedNumber(4) || (!third.isNumber(2) && !third.isNumber(4)))
        return partime_syntax;
    if (separator == '-' && third.isNumber(2))
        return partime_ambiguous; // any of the three may be the year
    next_ += 5;
    return setOrderedDate(first.value(), second.value(), yearOf(third));
}

/// Without an order, what only one of the two allows.
int ItemReader::setOrderedDate(int first, int second, std::optional<int> year) {
    if (first == second)
        return setDate(first, second, year);
    date_order_enum order = order_;
    // The caller's order counts before the installation's.
    // The caller's order counts before the installation's.
    if (order != date_order_dmy && order != date_order_mdy)
        order = configuredOrder();
    if (order == date_order_unknown) {
        const bool mayBeDayFirst = isWithin(second, 1, 12);
        const bool mayBeMonthFirst = isWithin(first, 1, 12);
        // Both fit: to guess would be wrong half of the time, and silently.
        // Both fit: to guess would be wrong half of the time, and silently.
        if (mayBeDayFirst == mayBeMonthFirst)
            return mayBeDayFirst ? partime_ambiguous : partime_range;
        order = mayBeDayFirst ? date_order_dmy : date_order_mdy;
    }
    return order == date_order_dmy ? setDate(second, first, year) : setDate(first, second, year);
}

/// YYYYMMDD, YYYYMMDDhhmm, YYYYMMDDhhmmss.
int ItemReader::readCompact() {
    const std::string_view digits = token().text();
    if (digits.size() != 8 && digits.size() != 12 && digits.size() != 14)
        return partime_syntax;
    const auto part = [digits](std::size_t from, std::size_t length) {
        return static_cast<int>(numberOf(digits.substr(from, length)));
    };
    const int status = setDate({part(0, 4), part(4, 2), part(6, 2)});
    if (status == partime_ok && digits.size() > 8)
        return readDigitClock(digits.substr(8));
    ++next_;
    return finishDate(status);
}

// ------------------------------------------------------------- dates with a month's name

/// D Month Y, D Month YY, D Month.
int ItemReader::readDayMonth() {
    const int day = token().isShortNumber() ? token().value() : -1;
    std::size_t at = skipOrdinal(1);
    if (token(at).is("of"))
        ++at;
    const int month = token(at).kind == Token::word ? findMonth(token(at).text()) : 0;
    if (day < 0 || month == 0)
        return partime_syntax;
    next_ += skipDot(at + 1);
    return setDate(month, day, readYear(true));
}

/// Month D, Y; Month D; Month Y.
int ItemReader::readMonthFirst(int month) {
    next_ += skipDot(1);
    // A year needs four digits here: "May 10" is a day.
    // A year needs four digits here: "May 10" is a day.
    if (const std::optional<int> year = readYear(false))
        return setDate({*year, month, 1});
    if (!token().isShortNumber() || isGlued(1, ':') || isHalf(1))
        return partime_syntax;
    const int day = token().value();
    next_ += skipOrdinal(1);
    const std::optional<int> year = readYear(false);
    // "May 10 12:00:00 2024": the year may come behind the time.
    // "May 10 12:00:00 2024": the year may come behind the time.
    if (!year)
        ctime_ = Ctime::date;
    return setDate(month, day, year);
}

/// The year behind "Month D hh:mm:ss [zone]".
int ItemReader::readYearOfClock() {
    result_.day.year = token().value();
    result_.date = Statement::fullDate;
    ++next_;
    return exists(result_.day) ? partime_ok : partime_range;
}

// ------------------------------------------------------------------------- the result

int ItemReader::setDate(const Day& day) {
    if (!exists(day))
        return partime_range;
    const int status = claimDate(Statement::fullDate);
    if (status == partime_ok)
        result_.day = day;
    return status;
}

int ItemReader::setDate(int month, int day, std::optional<int> year) {
    if (year)
        return setDate({*year, month, day});
    // Which year is known when the zone is; until then 29 February is possible.
    // Which year is known when the zone is; until then 29 February is possible.
    constexpr int leapYear = 2000;
    const Day someDay{leapYear, month, day};
    if (!exists(someDay))
        return partime_range;
    const int status = claimDate(Statement::dayOfSomeYear);
    if (status == partime_ok)
        result_.day = someDay;
    return status;
}

int ItemReader::setDayOfYear(int year, int day) {
    const std::int64_t number = dayNumber({year, 1, 1}) + day - 1;
    // The 366th day of a common year is one of the next.
    // The 366th day of a common year is one of the next.
    return day >= 1 && dayOf(number).year == year ? setDate(dayOf(number)) : partime_range;
}

int ItemReader::claimDate(Statement::Date kind) {
    if (result_.date != Statement::noDate)
        return partime_conflict;
    result_.date = kind;
    result_.given |= partime_given_date;
    return partime_ok;
}

} // namespace kaz::dates
