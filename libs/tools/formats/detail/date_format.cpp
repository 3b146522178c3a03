// SPDX-License-Identifier: Apache-2.0
// Conversions are numbers, names or composites of others; three letters (%N, %s, %z)
// are like none of these. Flags and widths mean for each kind what they mean in GNU
// date, whose output scripts already know.
#include "tools/formats/detail/date_format.h"

#include "tools/formats/detail/ascii.h"
#include "tools/formats/detail/calendar.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace kaz::dates {

namespace {

/// A number with its sign in front: blanks fill up before the sign, zeros behind it.
void writeSigned(const Conversion& c, char sign, std::string_view digits, int width, char padding,
                 TextSink& sink) {
    if (c.padding != 0)
        padding = c.padding;
    // fill() takes a negative count for none, so a field that is too small is not cut.
    // fill() takes a negative count for none, so a field that is too small is not cut.
    const int missing = width - static_cast<int>(digits.size()) - (sign != 0 ? 1 : 0);
    if (padding == '_')
        sink.fill(' ', missing);
    if (sign != 0)
        sink.put(sign);
    if (padding == '0')
        sink.fill('0', missing);
    sink.put(digits);
}

/// Room for the digits of any number.
class Digits {
public:
    explicit Digits(std::uint64_t number) {
        do
            *--begin_ = static_cast<char>('0' + number % 10);
        while ((number /= 10) != 0);
    }
    std::string_view text() const { return {begin_, buffer_.data() + buffer_.size()}; }

private:
    std::array<char, 20> buffer_;
    char* begin_ = buffer_.data() + buffer_.size();
};

void writeNumber(const Conversion& c, int value, int digits, char padding, TextSink& sink) {
    const auto number = static_cast<unsigned>(value);
    writeSigned(c, 0, Digits(number).text(), c.width < 0 ? digits : c.width, padding, sink);
}

/// A text, behind what the width asks for.
void writeText(const Conversion& c, std::string_view text, TextSink& sink) {
    if (c.padding != '-')
        sink.fill(c.padding == '0' ? '0' : ' ', c.width - static_cast<int>(text.size()));
    sink.put(text);
}

/// Changed first and filled up then: what fills up has no case.
/// Changed first and filled up then: what fills up has no case.
void writeInCase(const Conversion& c, std::string_view text, char (*change)(char), TextSink& sink) {
    TextSink changed;
    for (const char letter : text)
        changed.put(change(letter));
    writeText(c, changed.view(), sink);
}

} // namespace

DateFormatter::DateFormatter(const Moment& moment, const Language* language)
    : moment_(moment),
      parts_(moment.parts),
      day_(dayNumber({parts_.year, parts_.month, parts_.day})),
      language_(language) {}

const Language& DateFormatter::language() {
    if (language_ == nullptr)
        language_ = &languageInForce();
    return *language_;
}

int DateFormatter::weekday() const {
    return weekdayOf(day_);
}

int DateFormatter::dayOfYear() const {
    return static_cast<int>(day_ - dayNumber({parts_.year, 1, 1})) + 1;
}

/// A composite calls this for its parts: no composite of a language holds another one of it, so the
/// depth is bounded.
/// A composite calls this for its parts: no composite of a language holds another one of it, so the
/// depth is bounded.
void DateFormatter::write(const char* format, const Conversion& around, TextSink& sink) {
    for (const char* at = format; *at != '\0';) {
        if (*at != '%')
            sink.put(*at++);
        else if (around.padding == 0 && writePlain(at[1], sink))
            at += 2;
        else
            at = convert(at + 1, around, sink);
    }
}

/// What most formats are made of, without flags and width; false for the rest. It
/// halves the instructions of "%Y-%m-%d %H:%M:%S".
bool DateFormatter::writePlain(char letter, TextSink& sink) const {
    switch (letter) {
    case 'Y':
        // A zone east of UTC shows the last hours of 9999 as a year of five digits.
        // A zone east of UTC shows the last hours of 9999 as a year of five digits.
        if (parts_.year > 9999)
            return false;
        sink.putTwoDigits(parts_.year / 100);
        sink.putTwoDigits(parts_.year % 100);
        return true;
    case 'm':
        sink.putTwoDigits(parts_.month);
        return true;
    case 'd':
        sink.putTwoDigits(parts_.day);
        return true;
    case 'H':
        sink.putTwoDigits(parts_.hour);
        return true;
    case 'M':
        sink.putTwoDigits(parts_.minute);
        return true;
    case 'S':
        sink.putTwoDigits(parts_.second);
        return true;
    default:
        return false;
    }
}

/// One conversion, from behind its "%" on; gives the place behind it. @p around is the
/// composite that it belongs to: its case counts for all parts, and its padding for the
/// year of a date in digits.
const char* DateFormatter::convert(const char* text, const Conversion& around, TextSink& sink) {
    Conversion c;
    const char* const end = readConversion(text, c);
    c.upper = c.upper || around.upper;
    // A part has no flags of its own.
    if (around.padding != 0 && (c.letter == 'y' || c.letter == 'Y'))
        c.padding = around.padding;
    const Number number = numberOf(c.letter);
    if (number.digits != 0)
        writeNumber(c, number.value, number.digits, number.padding, sink);
    else if (!convertRest(c, sink))
        // Text that is no conversion stands as it is, with its "%".
        // Text that is no conversion stands as it is, with its "%".
        for (const char* at = text - 1; at < end; ++at)
            sink.put(*at);
    return end;
}

/// The language is looked up by composites and names only: numbers cost no look at the
/// configuration.
/// The language is looked up by composites and names only: numbers cost no look at the
/// configuration.
bool DateFormatter::convertRest(const Conversion& c, TextSink& sink) {
    if (const char* composite = compositeOf(c.letter))
        writeComposite(c, composite, sink);
    else if (const std::string_view name = nameOf(c.letter); !name.empty())
        writeName(c, name, sink);
    else if (c.letter == 'z')
        writeOffset(c, sink);
    else if (c.letter == 'Z')
        writeZone(c, sink);
    else if (c.letter == 'N')
        writeNanoseconds(c, sink);
    else if (c.letter == 's')
        writeSigned(c, moment_.seconds < 0 ? '-' : '\0',
                    Digits(static_cast<std::uint64_t>(std::abs(moment_.seconds))).text(), c.width,
                    '0', sink);
    else
        return false;
    return true;
}

DateFormatter::Number DateFormatter::numberOf(char letter) const {
    switch (letter) {
    case 'C':
        return {parts_.year / 100, 2, '0'};
    case 'd':
        return {parts_.day, 2, '0'};
    case 'e':
        return {parts_.day, 2, '_'};
    case 'H':
        return {parts_.hour, 2, '0'};
    case 'I':
        return {hour12(), 2, '0'};
    case 'k':
        return {parts_.hour, 2, '_'};
    case 'l':
        return {hour12(), 2, '_'};
    case 'm':
        return {parts_.month, 2, '0'};
    case 'M':
        return {parts_.minute, 2, '0'};
    case 'q':
        return {(parts_.month + 2) / 3, 1, '0'};
    case 'S':
        return {parts_.second, 2, '0'};
    case 'y':
        return {parts_.year % 100, 2, '0'};
    case 'Y':
        return {parts_.year, 4, '0'};
    default:
        return weekNumberOf(letter);
    }
}

/// Weeks of ISO 8601 (%g %G %V) may belong to the year before or behind. %U and %W count from the
/// first Sunday or Monday of the year; the days before it are in week 0.
/// Weeks of ISO 8601 (%g %G %V) may belong to the year before or behind. %U and %W count from the
/// first Sunday or Monday of the year; the days before it are in week 0.
DateFormatter::Number DateFormatter::weekNumberOf(char letter) const {
    switch (letter) {
    case 'g':
        return {(weekOf(day_).year + 100) % 100, 2, '0'};
    case 'G':
        return {weekOf(day_).year, 4, '0'};
    case 'j':
        return {dayOfYear(), 3, '0'};
    case 'u':
        return {(weekday() + 6) % 7 + 1, 1, '0'};
    case 'U':
        return {(dayOfYear() + 6 - weekday()) / 7, 2, '0'};
    case 'V':
        return {weekOf(day_).week, 2, '0'};
    case 'w':
        return {weekday(), 1, '0'};
    case 'W':
        return {(dayOfYear() + 6 - (weekday() + 6) % 7) / 7, 2, '0'};
    default:
        return {0, 0, 0};
    }
}

/// Null for a letter that is none.
const char* DateFormatter::compositeOf(char letter) {
    switch (letter) {
    case 'c':
        return language().dateTime;
    case 'D':
        return "%m/%d/%y";
    case 'F':
        return "%Y-%m-%d";
    case 'r':
        return "%I:%M:%S %p";
    case 'R':
        return "%H:%M";
    case 'T':
    case 'X':
        return "%H:%M:%S";
    case 'x':
        return language().date;
    default:
        return nullptr;
    }
}

/// Empty for a letter that is none.
std::string_view DateFormatter::nameOf(char letter) {
    const auto month = static_cast<std::size_t>(parts_.month - 1);
    const auto weekday = static_cast<std::size_t>(this->weekday());
    switch (letter) {
    case 'a':
        return language().shortWeekdays[weekday];
    case 'A':
        return language().weekdays[weekday];
    case 'b':
    case 'h':
        return language().shortMonths[month];
    case 'B':
        return language().months[month];
    case 'p':
    case 'P':
        return parts_.hour < 12 ? "AM" : "PM";
    case 'n':
        return "\n";
    case 't':
        return "\t";
    case '%':
        return "%";
    default:
        return {};
    }
}

/// "#" makes names of days and months upper case, and "AM" lower case.
void DateFormatter::writeName(const Conversion& c, std::string_view name, TextSink& sink) {
    const bool isHalfOfDay = c.letter == 'p' || c.letter == 'P';
    if (c.letter == 'P' || (isHalfOfDay && c.other))
        writeInCase(c, name, lowerCase, sink);
    else if (c.upper || c.other)
        writeInCase(c, name, upperCase, sink);
    else
        writeText(c, name, sink);
}

void DateFormatter::writeComposite(const Conversion& c, const char* format, TextSink& sink) {
    Conversion around;
    around.upper = c.upper;
    if (c.letter == 'D')
        around.padding = c.padding;
    if (c.letter == 'F' && c.padding != 0)
        around.padding = '-'; // what fills up stands before the whole
    // Without a width the parts go to the sink at once; with one, their length must be known
    // before the first of them.
    // Without a width the parts go to the sink at once; with one, their length must be known
    // before the first of them.
    if (c.width < 0)
        return write(format, around, sink);
    TextSink whole;
    write(format, around, whole);
    writeText(c, whole.view(), sink);
}

/// A fixed offset has no name, and shows as one that date readers take.
/// A fixed offset has no name, and shows as one that date readers take.
void DateFormatter::writeZone(const Conversion& c, TextSink& sink) {
    TextSink name;
    if (moment_.zone.empty()) {
        Conversion offset;
        offset.colons = 1;
        writeOffset(offset, name);
    } else {
        name.put(std::string_view(moment_.zone).substr(0, TextSink::room));
    }
    if (c.other)
        writeInCase(c, name.view(), lowerCase, sink);
    else if (c.upper)
        writeInCase(c, name.view(), upperCase, sink);
    else
        writeText(c, name.view(), sink);
}

/// "+hhmm", with colons and as exact as their number asks for. Flags count for the
/// first number; without colons that is all of it.
void DateFormatter::writeOffset(const Conversion& c, TextSink& sink) {
    const int offset = std::abs(parts_.offset);
    const int hours = offset / 3600;
    const int minutes = offset / 60 % 60;
    int colons = c.colons;
    // Three ask for what is needed: seconds, minutes or hours alone. 3 further on means the
    // last, so that `colons % 3` counts the parts behind the hours.
    // Three ask for what is needed: seconds, minutes or hours alone. 3 further on means the
    // last, so that `colons % 3` counts the parts behind the hours.
    if (colons == 3)
        colons = offset % 60 != 0 ? 2 : minutes != 0 ? 1 : 3;
    Conversion first;
    first.padding = c.padding == '_' ? '-' : c.padding;
    TextSink digits;
    if (colons == 0)
        writeNumber(first, 100 * hours + minutes, 4, '0', digits);
    else
        writeNumber(first, hours, 2, '0', digits);
    for (int i = 0; i < colons % 3; ++i) {
        digits.put(':');
        writeNumber({}, i == 0 ? minutes : offset % 60, 2, '0', digits);
    }
    // With the sign, by number of colons: +hhmm, +hh:mm, +hh:mm:ss, +hh.
    // With the sign, by number of colons: +hhmm, +hh:mm, +hh:mm:ss, +hh.
    static constexpr int exact[] = {5, 6, 9, 3};
    const int width = c.width < 0 ? exact[colons] : c.width;
    writeSigned(c, parts_.offset < 0 ? '-' : '+', digits.view(), width, '_', sink);
}

/// A width is how many digits; "_" makes zeros at the end blanks, and "-" with a width
/// drops them.
void DateFormatter::writeNanoseconds(const Conversion& c, TextSink& sink) {
    // Of wider fields the rest is filled up behind the digits: a fraction grows to the right.
    // Of wider fields the rest is filled up behind the digits: a fraction grows to the right.
    const int width = c.width > 0 ? c.width : 9;
    std::array<char, 9> all;
    int rest = parts_.nanosecond;
    for (auto digit = all.rbegin(); digit != all.rend(); ++digit, rest /= 10)
        *digit = static_cast<char>('0' + rest % 10);
    auto kept = static_cast<std::size_t>(std::min(width, 9));
    const bool isWhole = c.padding == 0 || c.padding == '0' || (c.padding == '-' && c.width < 0);
    while (!isWhole && kept > 1 && all[kept - 1] == '0')
        --kept;
    sink.put({all.data(), kept});
    if (c.padding != '-')
        sink.fill(c.padding == '_' ? ' ' : '0', width - static_cast<int>(kept));
}

} // namespace kaz::dates
