// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a text states about a moment, item by item.
#pragma once

#include "tools/formats/datetime.h"
#include "tools/formats/detail/calendar.h"
#include "tools/formats/detail/date_scanner.h"
#include "tools/formats/detail/date_words.h"

#include <cstdint>
#include <optional>

namespace kaz::dates {

/// The sum of all items of a text.
struct Statement {
    int given = 0; ///< partime_given_enum values

    enum Date : std::uint8_t { noDate, fullDate, dayOfSomeYear, dayFromToday };
    Date date = noDate;
    Day day; ///< exists; without a year, in some year
    int daysFromToday = 0;

    int weekday = -1;
    int weekdayTurn = 0; ///< 1 for "next", -1 for "last"
    int weekdayAt = 0;

    enum Time : std::uint8_t { noTime, clockTime, presentTime };
    Time time = noTime;
    int secondOfDay = 0; ///< 86400 for 24:00
    int leapSecond = 0;  ///< 1 for second 60, secondOfDay being :59
    int nanosecond = 0;

    std::optional<int> offset; ///< of the zone that is stated

    Span relative;

    std::optional<std::int64_t> moment; ///< "@N"
};

/// Reads the items of one text from the left; the first that fails decides.
class ItemReader {
public:
    /// @p order unknown: ToolInfo is asked, once it matters.
    ItemReader(const Tokens& tokens, date_order_enum order) : tokens_(tokens), order_(order) {}

    /// A partime_status_enum value.
    int read();

    const Statement& statement() const { return result_; }
    /// Where the item that failed begins.
    int errorAt() const { return errorAt_; }

private:
    // Each reader takes one item from next_ on and gives a status; where it fails,
    // next_ may be anywhere. `ahead` counts tokens from next_ on.
    int readItem();
    int readNumber();
    int readWord();
    int readDayWord();
    int readTurn();
    int readMoment();
    int readSigned();
    int readSpans(int direction);
    int readWeekday(int turn);
    int add(const Span& span, int direction);

    int readPunctuated();
    int readYearFirst(char separator);
    int readWeekDate(int year, std::size_t week, bool isCompact);
    int readDayDotMonth();
    int readDayMonthYear();
    int readByOrder(char separator);
    int readDayMonth();
    int readMonthFirst(int month);
    int readCompact();
    int readYearOfClock();
    int finishDate(int status);

    int readClock();
    int readDigitClock(std::string_view digits);
    int readBareHour();
    int readHalf();
    int readFraction();
    int finishTime(int status, bool hasSeconds);
    int readZoneBehindTime();
    int readZoneWord();
    int readOffset(std::size_t fewestDigits, bool& isOffset);

    int setDate(const Day& day);
    int setDate(int month, int day, std::optional<int> year);
    int setDayOfYear(int year, int day);
    int setOrderedDate(int first, int second, std::optional<int> year);
    int setClock(int hour, int minute, int second, int nanosecond);
    int setZone(int offset);
    int claimDate(Statement::Date kind);
    int claimTime(Statement::Time kind);

    const Token& token(std::size_t ahead = 0) const { return tokens_[next_ + ahead]; }
    /// Is it that sign, with nothing before it?
    bool isGlued(std::size_t ahead, char sign) const {
        return token(ahead).isSign(sign) && !token(ahead).isApart;
    }
    bool isGluedNumber(std::size_t ahead) const {
        return token(ahead).kind == Token::number && !token(ahead).isApart;
    }
    bool isGluedWord(std::size_t ahead, std::string_view word) const {
        return token(ahead).is(word) && !token(ahead).isApart;
    }
    bool isFiller() const;
    bool isUnit(std::size_t ahead) const;
    bool isSpan(std::size_t ahead) const;
    bool isHalf(std::size_t ahead) const;
    bool isYear(std::size_t ahead, std::size_t digits) const;
    bool isTimeBehindT(std::size_t ahead) const;
    bool isSeparated() const;
    std::size_t skipDot(std::size_t ahead) const;
    std::size_t skipOrdinal(std::size_t ahead) const;
    std::optional<int> readYear(bool mayBeShort);

    const Tokens& tokens_;
    date_order_enum order_;
    Statement result_;
    std::size_t next_ = 0;
    int errorAt_ = 0;
    bool isBehindTime_ = false;

    /// How far "Month D hh:mm:ss [zone]", which a year may follow, was read just before.
    enum class Ctime : std::uint8_t { none, date, time };
    Ctime ctime_ = Ctime::none;
    Ctime ctimeBefore_ = Ctime::none; ///< this item
};

} // namespace kaz::dates
