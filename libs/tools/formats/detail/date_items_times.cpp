// SPDX-License-Identifier: Apache-2.0
// Times of day and zones.
#include "tools/formats/detail/date_items.h"

namespace kaz::dates {

// ---------------------------------------------------------------------- times of day

/// "am", "pm", "a.m." or "p.m."?
bool ItemReader::isHalf(std::size_t ahead) const {
    const Token& half = token(ahead);
    return half.is("am") || half.is("pm") ||
           ((half.is("a") || half.is("p")) && isGlued(ahead + 1, '.') &&
            isGluedWord(ahead + 2, "m"));
}

/// The hours to add for it: 0 or 12.
int ItemReader::readHalf() {
    const char letter = lowerCase(token().text()[0]);
    next_ += token().text().size() == 2 ? 1 : skipDot(3);
    return letter == 'p' ? 12 : 0;
}

/// The nanoseconds behind the token before; of more digits the first nine count.
int ItemReader::readFraction() {
    const std::string_view digits = tokens_.fractionBehind(next_ - 1);
    if (digits.empty())
        return 0;
    next_ += token().isSign('.') ? 2 : 1; // "," has no token
    auto nanosecond = static_cast<int>(numberOf(digits.substr(0, 9)));
    for (std::size_t i = digits.size(); i < 9; ++i)
        nanosecond *= 10;
    return nanosecond;
}

/// h:mm, hh:mm:ss with a fraction; am or pm behind it.
int ItemReader::readClock() {
    const int hour = token().isShortNumber() ? token().value() : -1;
    if (hour < 0 || !isGluedNumber(2) || !token(2).isNumber(2))
        return partime_syntax;
    const int minute = token(2).value();
    int second = 0;
    int nanosecond = 0;
    next_ += 3;
    const bool hasSeconds = isGlued(0, ':');
    if (hasSeconds) {
        if (!isGluedNumber(1) || !token(1).isNumber(2))
            return partime_syntax;
        second = token(1).value();
        next_ += 2;
        nanosecond = readFraction();
    }
    if (!isHalf(0))
        return finishTime(setClock(hour, minute, second, nanosecond), hasSeconds);
    // Noon is 12 pm and midnight 12 am: 12 counts as 0 before the half is added.
    // Noon is 12 pm and midnight 12 am: 12 counts as 0 before the half is added.
    if (hour < 1 || hour > 12)
        return partime_range;
    return finishTime(setClock(hour % 12 + readHalf(), minute, second, nanosecond), hasSeconds);
}

/// "h am".
int ItemReader::readBareHour() {
    const int hour = token().isShortNumber() ? token().value() : -1;
    if (hour < 0)
        return partime_syntax;
    ++next_;
    const int half = readHalf();
    return hour >= 1 && hour <= 12 ? finishTime(setClock(hour % 12 + half, 0, 0, 0), false)
                                   : partime_range;
}

/// hh, hhmm or hhmmss, at the end of the next token.
int ItemReader::readDigitClock(std::string_view digits) {
    const auto part = [digits](std::size_t from) {
        return from < digits.size() ? static_cast<int>(numberOf(digits.substr(from, 2))) : 0;
    };
    ++next_;
    const int nanosecond = digits.size() == 6 ? readFraction() : 0;
    return finishTime(setClock(part(0), part(2), part(4), nanosecond), false);
}

/// 24:00 is the end of the day (ISO 8601). A leap second is the second before with one more added
/// at the end, since moments do not count it.
/// 24:00 is the end of the day (ISO 8601). A leap second is the second before with one more added
/// at the end, since moments do not count it.
int ItemReader::setClock(int hour, int minute, int second, int nanosecond) {
    const bool isEndOfDay = hour == 24 && minute == 0 && second == 0 && nanosecond == 0;
    if ((hour > 23 && !isEndOfDay) || minute > 59 || second > 60)
        return partime_range;
    const int status = claimTime(Statement::clockTime);
    if (status != partime_ok)
        return status;
    result_.leapSecond = second == 60 ? 1 : 0;
    result_.secondOfDay = hour * 3600 + minute * 60 + second - result_.leapSecond;
    result_.nanosecond = nanosecond;
    return partime_ok;
}

int ItemReader::claimTime(Statement::Time kind) {
    if (result_.time != Statement::noTime)
        return partime_conflict;
    result_.time = kind;
    result_.given |= partime_given_time;
    return partime_ok;
}

int ItemReader::finishTime(int status, bool hasSeconds) {
    if (status != partime_ok)
        return status;
    isBehindTime_ = true;
    // From here a number of four digits is the year of the date before the time.
    // From here a number of four digits is the year of the date before the time.
    if (hasSeconds && ctimeBefore_ == Ctime::date)
        ctime_ = Ctime::time;
    return readZoneBehindTime();
}

// ----------------------------------------------------------------------------- zones

/// An offset, or a zone's name with nothing between. Whatever else is there is the next
/// item's.
int ItemReader::readZoneBehindTime() {
    // A bad zone is reported where it stands, and a bad time behind it where that stood.
    // A bad zone is reported where it stands, and a bad time behind it where that stood.
    const int timeAt = errorAt_;
    errorAt_ = token().at;
    if (token().kind == Token::word && !token().isApart && findZone(token().text()))
        return readZoneWord();
    bool isOffset = false;
    const int status = readOffset(2, isOffset);
    if (!isOffset)
        errorAt_ = timeAt;
    return status;
}

/// A zone's name; for "UTC" and "GMT" perhaps with a distance.
int ItemReader::readZoneWord() {
    const Token& name = token();
    ++next_;
    if (ctimeBefore_ == Ctime::time)
        ctime_ = Ctime::time;
    bool isOffset = false;
    // "UTC+2" is a zone of its own; "EST+2" has no agreed meaning, so the sign begins an item.
    // "UTC+2" is a zone of its own; "EST+2" has no agreed meaning, so the sign begins an item.
    if ((name.is("UTC") || name.is("GMT")) && !token().isApart)
        if (const int status = readOffset(1, isOffset); isOffset || status != partime_ok)
            return status;
    return setZone(*findZone(name.text()));
}

/// A sign and h (if @p fewestDigits is 1), hh, hhmm or hh:mm. Nothing is read when a
/// unit follows: that is a relative item.
int ItemReader::readOffset(std::size_t fewestDigits, bool& isOffset) {
    const bool isWest = token().isSign('-');
    const Token& digits = token(1);
    if ((!isWest && !token().isSign('+')) || !isGluedNumber(1) ||
        (!digits.isNumber(4) && (!digits.isShortNumber() || digits.text().size() < fewestDigits)))
        return partime_ok;
    const bool hasMinutes =
        digits.isShortNumber() && isGlued(2, ':') && isGluedNumber(3) && token(3).isNumber(2);
    const std::size_t length = hasMinutes ? 4 : 2;
    // "10:00 +2 hours" adds, where "10:00 +2" would be a zone.
    // "10:00 +02 hours" adds, where "10:00 +02" would be a zone.
    if (isUnit(length))
        return partime_ok;
    isOffset = true;
    const bool isCompact = digits.isNumber(4);
    const int hours = isCompact ? digits.value() / 100 : digits.value();
    const int minutes = isCompact ? digits.value() % 100 : hasMinutes ? token(3).value() : 0;
    next_ += length;
    if (hours > 23 || minutes > 59)
        return partime_range;
    const int offset = hours * 3600 + minutes * 60;
    return setZone(isWest ? -offset : offset);
}

int ItemReader::setZone(int offset) {
    if (result_.offset)
        return partime_conflict;
    result_.offset = offset;
    result_.given |= partime_given_zone;
    return partime_ok;
}

} // namespace kaz::dates
