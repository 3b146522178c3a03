// SPDX-License-Identifier: Apache-2.0
// Which item begins here, and the items that are words. Dates and times of digits are
// read in files of their own.
#include "tools/formats/detail/date_items.h"

#include "tools/formats/detail/date_words.h"
#include "tools/formats/detail/moment.h"

#include <algorithm>

namespace kaz::dates {

/// Each turn takes one item or fails, so the time is linear. errorAt_ is the item's place unless
/// a reader finds a better one inside it.
/// Each turn takes one item or fails, so the time is linear. errorAt_ is the item's place unless
/// a reader finds a better one inside it.
int ItemReader::read() {
    while (token().kind != Token::end) {
        errorAt_ = token().at;
        // Whether the item before was part of "Month D hh:mm:ss Y" counts for one item only.
        // Whether the item before was part of "Month D hh:mm:ss Y" counts for one item only.
        ctimeBefore_ = ctime_;
        ctime_ = Ctime::none;
        if (isFiller()) {
            ++next_;
            continue;
        }
        // "@N" is a whole moment: nothing may stand beside it, before or behind.
        // "@N" is a whole moment: nothing may stand beside it, before or behind.
        const bool hadMoment = result_.moment.has_value();
        const int given = result_.given;
        if (const int status = isSeparated() ? readItem() : partime_syntax; status != partime_ok)
            return status;
        if (hadMoment || (result_.moment && given != 0))
            return partime_conflict;
    }
    // A zone alone is no date.
    // A zone alone is no date.
    errorAt_ = 0;
    constexpr int enough = partime_given_date | partime_given_time | partime_given_relative;
    return (result_.given & enough) != 0 ? partime_ok : partime_syntax;
}

bool ItemReader::isFiller() const {
    const auto is = [this](std::string_view word) { return token().is(word); };
    return token().isApart && (is("at") || is("on") || is("and"));
}

/// A sign needs nothing before it where it cannot be taken for part of a date.
bool ItemReader::isSeparated() const {
    const bool isSign = token().isSign('+') || token().isSign('-');
    return token().isApart || (isSign && (isBehindTime_ || tokens_[next_ - 1].kind == Token::word));
}

int ItemReader::readItem() {
    isBehindTime_ = false;
    const Token& first = token();
    if (first.kind == Token::number)
        return readNumber();
    if (first.kind == Token::word)
        return readWord();
    if (first.isSign('@'))
        return readMoment();
    if (first.isSign('+') || first.isSign('-'))
        return readSigned();
    return partime_syntax;
}

/// The order matters: a colon makes a time whatever follows, "5 days" is a span before it is a
/// day, and the year of a C library's date must not be read as a compact one.
/// The order matters: a colon makes a time whatever follows, "5 days" is a span before it is a
/// day, and the year behind a C library's time is taken before days are tried.
int ItemReader::readNumber() {
    if (isGlued(1, ':'))
        return readClock();
    if (isSpan(0))
        return readSpans(0);
    if (isHalf(1))
        return readBareHour();
    if (token(1).kind == Token::sign && !token(1).isApart)
        return finishDate(readPunctuated());
    if (token().isNumber(4) && isGluedWord(1, "w"))
        return finishDate(readWeekDate(token().value(), 2, true));
    if (ctimeBefore_ == Ctime::time && isYear(0, 4))
        return readYearOfClock();
    return token().text().size() >= 8 ? readCompact() : finishDate(readDayMonth());
}

/// "second" is a unit before it is anything else, and zones come before months and weekdays, of
/// which a language in force may have the same.
/// "a" and "an" begin spans only in front of a unit. Zones come before months and weekdays, so
/// that no language in force can hide one.
int ItemReader::readWord() {
    const Token& word = token();
    if (word.is("in")) {
        ++next_;
        return isSpan(0) ? readSpans(1) : partime_syntax;
    }
    if (isSpan(0))
        return readSpans(0);
    if (word.is("this") || word.is("next") || word.is("last"))
        return readTurn();
    if (const int status = readDayWord(); status != partime_syntax)
        return status;
    if (findZone(word.text()))
        return readZoneWord();
    if (const int month = findMonth(word.text()); month != 0)
        return finishDate(readMonthFirst(month));
    return readWeekday(0);
}

/// "now", "today" and its kin, "noon" and "midnight".
int ItemReader::readDayWord() {
    const Token& word = token();
    ++next_;
    if (word.is("now"))
        return claimTime(Statement::presentTime);
    if (word.is("noon") || word.is("midnight"))
        return finishTime(setClock(word.is("noon") ? 12 : 0, 0, 0, 0), false);
    const bool isYesterday = word.is("yesterday");
    if (isYesterday || word.is("today") || word.is("tomorrow")) {
        result_.daysFromToday = isYesterday ? -1 : word.is("tomorrow") ? 1 : 0;
        return claimDate(Statement::dayFromToday);
    }
    --next_;
    return partime_syntax;
}

/// "next week", "last Friday", "this Friday".
/// "this" goes with weekdays alone: "this week" says nothing about a day.
/// "this" goes with weekdays alone: "this week" says nothing about a day.
int ItemReader::readTurn() {
    const int turn = token().is("next") ? 1 : token().is("last") ? -1 : 0;
    ++next_;
    const Unit* unit = token().kind == Token::word ? findUnit(token().text()) : nullptr;
    if (unit == nullptr || turn == 0)
        return readWeekday(turn);
    ++next_;
    return add(unit->length, turn);
}

int ItemReader::readWeekday(int turn) {
    const Token& word = token();
    if (word.kind != Token::word || findMonth(word.text()) != 0)
        return partime_syntax;
    const int weekday = findWeekday(word.text());
    if (weekday < 0)
        return partime_syntax;
    if (result_.weekday >= 0)
        return partime_conflict;
    next_ += skipDot(1);
    result_.weekday = weekday;
    result_.weekdayTurn = turn;
    result_.weekdayAt = errorAt_;
    result_.given |= partime_given_date;
    return partime_ok;
}

/// "@N": a moment by its number.
int ItemReader::readMoment() {
    const bool isNegative = isGlued(1, '-');
    next_ += isNegative ? 2 : 1;
    if (!isGluedNumber(0))
        return partime_syntax;
    const std::string_view digits = token().text();
    ++next_;
    const int nanosecond = readFraction();
    // What has 18 digits fits 64 bits, whatever they are.
    // What has 18 digits fits 64 bits, whatever they are.
    if (digits.size() > 18)
        return partime_range;
    std::int64_t moment = isNegative ? -numberOf(digits) : numberOf(digits);
    // Nanoseconds always count forward from the second below.
    // Nanoseconds always count forward from the second below.
    if (isNegative && nanosecond != 0)
        --moment;
    if (!isMoment(moment))
        return partime_range;
    result_.moment = moment;
    result_.nanosecond = isNegative && nanosecond != 0 ? 1'000'000'000 - nanosecond : nanosecond;
    result_.given |= partime_given_date | partime_given_time;
    return partime_ok;
}

// -------------------------------------------------------------------- relative items

bool ItemReader::isUnit(std::size_t ahead) const {
    return token(ahead).kind == Token::word && findUnit(token(ahead).text()) != nullptr;
}

/// "N unit", "a unit"?
/// Nine digits: products with the longest unit, and sums of all that a text can hold, stay far
/// from the limits of 64 bits.
/// Nine digits: products with the longest unit, and sums of all that a text can hold, stay far
/// from the limits of 64 bits.
bool ItemReader::isSpan(std::size_t ahead) const {
    const Token& count = token(ahead);
    const bool isNumber = count.kind == Token::number && count.text().size() <= 9;
    return (isNumber || count.is("a") || count.is("an")) && isUnit(ahead + 1);
}

/// Spans one after the other. @p direction 0: what follows them tells.
int ItemReader::readSpans(int direction) {
    Span sum;
    const bool isOpen = direction == 0;
    do {
        const std::int64_t count = token().kind == Token::number ? token().value() : 1;
        sum += findUnit(token(1).text())->length * count;
        // An "and" belongs to the spans only when one follows; else it is filler.
        // An "and" belongs to the spans only when one follows; else it is filler.
        next_ += token(2).is("and") && isSpan(3) ? 3 : 2;
        // Behind "in" spans go on by "and" alone, as what follows may be an item of its own.
        // Behind "in" spans go on by "and" alone, as what follows may be an item of its own.
    } while ((isOpen || tokens_[next_ - 1].is("and")) && isSpan(0));
    if (isOpen && token().is("ago"))
        direction = -1;
    else if (isOpen && token().is("from") && token(1).is("now"))
        direction = 1;
    if (direction == 0)
        return partime_syntax;
    next_ += !isOpen ? 0 : direction > 0 ? 2 : 1;
    return add(sum, direction);
}

int ItemReader::add(const Span& span, int direction) {
    result_.relative += span * direction;
    result_.given |= partime_given_relative;
    return partime_ok;
}

/// "+N unit", "-N unit".
int ItemReader::readSigned() {
    const int direction = token().isSign('-') ? -1 : 1;
    ++next_;
    const bool isCount = isGluedNumber(0) && isSpan(0);
    if (!isCount)
        return partime_syntax;
    const Unit& unit = *findUnit(token(1).text());
    const std::int64_t count = token().value();
    next_ += 2;
    return add(unit.length * count, direction);
}

} // namespace kaz::dates
