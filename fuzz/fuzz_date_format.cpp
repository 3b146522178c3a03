// SPDX-License-Identifier: Apache-2.0
// Formats of dates: any format gives what a model says that reads it in one pass of its
// own, with the calendar of the C++ library.
#include "fuzz/harness.h"
#include "tools/formats/datetime.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace {

std::chrono::sys_days dayOf(int year, int month, int day) {
    return std::chrono::year(year) / month / day;
}

/// The day of the year from 0.
int dayOfYear(const date_parts& p) {
    return static_cast<int>((dayOf(p.year, p.month, p.day) - dayOf(p.year, 1, 1)).count());
}

/// From Monday, 0 to 6.
int fromMonday(const date_parts& p) {
    return static_cast<int>(std::chrono::weekday(dayOf(p.year, p.month, p.day)).iso_encoding()) - 1;
}

/// Thursday of the same week tells the year of the week, and its number.
void isoWeek(const date_parts& p, int& year, int& week) {
    year = p.year;
    int thursday = dayOfYear(p) + 3 - fromMonday(p);
    const auto lengthOf = [](int y) { return date_month_length(y, 2) + 337; };
    if (thursday < 0)
        thursday += lengthOf(--year);
    else if (thursday >= lengthOf(year))
        thursday -= lengthOf(year++);
    week = thursday / 7 + 1;
}

struct Conversion {
    char pad = 0;
    bool upper = false, other = false;
    int width = -1;
};

std::string cased(std::string text, bool upper) {
    for (char& c : text)
        if (upper ? c >= 'a' && c <= 'z' : c >= 'A' && c <= 'Z')
            c = static_cast<char>(c ^ 0x20);
    return text;
}

std::string padded(const Conversion& conversion, const std::string& text) {
    const int missing =
        conversion.pad == '-' ? 0 : conversion.width - static_cast<int>(text.size());
    return std::string(static_cast<std::size_t>(std::max(missing, 0)),
                       conversion.pad == '0' ? '0' : ' ') +
           text;
}

std::string numberText(Conversion conversion, long long value, int digits, char pad) {
    if (conversion.pad == 0)
        conversion.pad = pad;
    if (conversion.width < 0)
        conversion.width = digits;
    const std::string text = std::to_string(std::llabs(value));
    if (value >= 0)
        return padded(conversion, text);
    conversion.width -= conversion.pad == '0' ? 1 : 0;
    return conversion.pad == '0' ? "-" + padded(conversion, text) : padded(conversion, "-" + text);
}

struct Model {
    date_parts p;
    std::int64_t seconds;

    std::string write(const std::string& format, const Conversion& around) const;
    std::string convert(char letter, Conversion conversion) const;
    std::string number(char letter, const Conversion& conversion) const;

    std::string name(char letter) const {
        return FmtDate(p, ("%" + std::string(1, letter)).c_str()).getValue();
    }
};

std::string Model::number(char letter, const Conversion& s) const {
    int year = 0, week = 0;
    isoWeek(p, year, week);
    const int hour = p.hour % 12 == 0 ? 12 : p.hour % 12;
    const int sunday = (fromMonday(p) + 1) % 7;
    const int days = dayOfYear(p);
    const struct {
        char letter;
        long long value;
        int digits;
        char pad = '0';
    } rows[] = {{'C', p.year / 100, 2},
                {'d', p.day, 2},
                {'e', p.day, 2, '_'},
                {'g', year < 0 ? 99 : year % 100, 2},
                {'G', year, 4},
                {'H', p.hour, 2},
                {'I', hour, 2},
                {'j', days + 1, 3},
                {'k', p.hour, 2, '_'},
                {'l', hour, 2, '_'},
                {'m', p.month, 2},
                {'M', p.minute, 2},
                {'q', (p.month - 1) / 3 + 1, 1},
                {'s', seconds, 1},
                {'S', p.second, 2},
                {'u', fromMonday(p) + 1, 1},
                {'U', (days + 7 - sunday) / 7, 2},
                {'V', week, 2},
                {'w', sunday, 1},
                {'W', (days + 7 - fromMonday(p)) / 7, 2},
                {'y', p.year % 100, 2},
                {'Y', p.year, 4}};
    for (const auto& row : rows)
        if (row.letter == letter)
            return numberText(s, row.value, row.digits, row.pad);
    return {};
}

/// "" for a letter that is none; %N and %z are left to the tests.
std::string Model::convert(char letter, Conversion conversion) const {
    static const std::map<char, const char*> meanings = {
        {'n', "\n"},       {'t', "\t"},          {'%', ""},      {'c', "%a %b %e %H:%M:%S %Y"},
        {'x', "%m/%d/%y"}, {'r', "%I:%M:%S %p"}, {'R', "%H:%M"}, {'T', "%H:%M:%S"},
        {'X', "%H:%M:%S"}};
    Conversion inner;
    inner.upper = conversion.upper;
    if (const auto found = meanings.find(letter); found != meanings.end())
        return padded(conversion, letter == '%' ? "%" : write(found->second, inner));
    const auto isOneOf = [letter](std::string_view letters) {
        return letters.find(letter) != letters.npos;
    };
    if (isOneOf("aAbBh")) {
        const std::string text = name(letter);
        return padded(conversion, conversion.upper || conversion.other ? cased(text, true) : text);
    }
    if (isOneOf("pP")) {
        const std::string text = p.hour < 12 ? "AM" : "PM";
        return padded(conversion, letter == 'P' || conversion.other ? cased(text, false) : text);
    }
    if (letter == 'Z')
        return padded(conversion, name('Z'));
    if (!isOneOf("DF"))
        return number(letter, conversion);
    inner.pad = letter == 'D' ? conversion.pad : conversion.pad != 0 ? '-' : '\0';
    return padded(conversion, letter == 'D' ? write("%m/%d/", inner) + number('y', inner)
                                            : number('Y', inner) + write("-%m-%d", inner));
}

std::string Model::write(const std::string& format, const Conversion& around) const {
    std::string result;
    for (std::size_t at = 0; at < format.size();) {
        if (format[at] != '%') {
            result += format[at++];
            continue;
        }
        Conversion conversion;
        std::size_t end = format.find_first_not_of("-_0^#", at + 1);
        end = std::min(end, format.size());
        for (const char flag : format.substr(at + 1, end - at - 1)) {
            conversion.upper = conversion.upper || flag == '^';
            conversion.other = conversion.other || flag == '#';
            if (flag != '^' && flag != '#')
                conversion.pad = flag;
        }
        const std::size_t past =
            std::min(format.find_first_not_of("0123456789", end), format.size());
        if (past > end)
            conversion.width =
                past - end > 3 ? 255 : std::min(255, std::stoi(format.substr(end, past - end)));
        end = past;
        if (end < format.size() && (format[end] == 'E' || format[end] == 'O'))
            ++end;
        conversion.upper = conversion.upper || around.upper;
        const std::string text = end < format.size() ? convert(format[end], conversion) : "";
        const bool isPart = end < format.size() && format[end] != ':';
        end += isPart ? 1 : 0;
        result += text.empty() ? format.substr(at, end - at) : text;
        at = end;
    }
    return result;
}

} // namespace

void fuzz::harness(Input& input) {
    static const bool isEnglish = date_set_language("en");
    Model model;
    date_parts& p = model.p;
    p.year = input.between(0, 10000);
    p.month = input.between(1, 12);
    p.day = input.between(1, std::max(date_month_length(p.year, p.month), 1));
    p.hour = input.between(0, 23);
    p.minute = input.between(0, 59);
    p.second = input.between(0, 59);
    p.offset = 60 * input.between(-1439, 1439);
    std::string format =
        input.flag()
            ? input.textOf("%%%%%-_0^#157EOaAbBCdDeFgGhHIjklmMnpPqrRsStTuUVwWxXyYZ%c:QLö ", 60)
            : input.cText(2000);
    // The model leaves these two out.
    std::replace(format.begin(), format.end(), 'N', 'S');
    std::replace(format.begin(), format.end(), 'z', 'Z');
    if (format.starts_with('@')) // may be a name
        format.front() = ' ';
    const KazString text = FmtDate(p, format.c_str());
    if (!isEnglish || !date_join(&p, &model.seconds) || format.size() > 1024)
        FUZZ_CHECK(text.isEmpty());
    else
        FUZZ_CHECK(model.write(format, {}) == text.getValue());
}
