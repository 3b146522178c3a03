// SPDX-License-Identifier: Apache-2.0
// Reading of dates: any text ends in a status and a place inside it; blanks, comments
// and the case of letters change nothing; and texts that are put together from parts
// mean what their parts say.
#include "fuzz/harness.h"
#include "tools/formats/datetime.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

namespace {

constexpr std::size_t longest = 255;

const char* const vocabulary[] = {
    "now",        "today",    "tomorrow",  "yesterday", "noon",       "midnight",    "next",
    "last",       "this",     "in",        "ago",       "from now",   "a",           "an",
    "and",        "at",       "of",        "monday",    "tues",       "Thu.",        "Fri,",
    "march",      "Sept.",    "mar",       "ago 3",     "days",       "week",        "months",
    "sec",        "hour",     "quarter",   "year",      "am",         "p.m.",        "Z",
    "UTC",        "UTC+3",    "GMT-3:30",  "EST",       "+02:00",     "-0330",       "+3 days",
    "-1 month",   "@5",       "@-1.5",     "2026",      "26",         "12",          "12th",
    "12.",        "12.3.",    "12.3.2026", "3/4",       "13/4/26",    "3-4-2026",    "1-2-3",
    "14:05",      "14:05:09", "24:00",     ".5",        ",25",        "23:59:60Z",   "T14:05",
    "2026-03-12", "2026-",    "2026-073",  "W11",       "2026-W11",   "W116",        "20260312",
    "1234567890", "(x)",      "(",         "\xC3\xA9",  "mi\xC3\xA9", "M\xC3\xA4rz", "/",
    ":",          "-",        "+"};

struct Answer {
    int status;
    partime_result result;
};

bool operator==(const Answer& a, const Answer& b) {
    return a.status == b.status && a.result.seconds == b.result.seconds &&
           a.result.nanosecond == b.result.nanosecond && a.result.offset == b.result.offset &&
           a.result.given == b.result.given;
}

/// Reads, and holds what is promised of every answer.
Answer read(const std::string& text, const partime_options& options) {
    Answer answer;
    answer.result.seconds = 77;
    answer.status = partime(text.c_str(), &options, &answer.result);
    const partime_result& r = answer.result;
    if (answer.status == partime_ok) {
        FUZZ_CHECK(date_min <= r.seconds && r.seconds <= date_max);
        FUZZ_CHECK(0 <= r.nanosecond && r.nanosecond < 1'000'000'000);
        FUZZ_CHECK(-86340 <= r.offset && r.offset <= 86340);
        FUZZ_CHECK(r.given != 0 && r.errorAt == 0);
    } else {
        FUZZ_CHECK(partime_conflict <= answer.status && answer.status < partime_ok);
        FUZZ_CHECK(r.seconds == 77 && r.given == 0);
        FUZZ_CHECK(r.errorAt >= 0 && static_cast<std::size_t>(r.errorAt) <= text.size());
    }
    return answer;
}

std::string upperCase(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

void spellingDoesNotCount(const std::string& text, const partime_options& options) {
    const Answer answer = read(text, options);
    FUZZ_CHECK(read(upperCase(text), options) == answer);
    std::string tabs = text;
    std::replace(tabs.begin(), tabs.end(), ' ', '\t');
    FUZZ_CHECK(read(tabs, options) == answer);
    if (text.size() + 4 > longest || answer.status == partime_empty)
        return;
    for (const std::string& longer : {" \n," + text, "(x)" + text, text + " ,"}) {
        const Answer same = read(longer, options);
        FUZZ_CHECK(same == answer);
        const int moved = same.result.errorAt - answer.result.errorAt;
        FUZZ_CHECK(moved == 3 || moved == 0);
    }
}

/// A date and a time by one of several forms, with spans in between.
void partsAddUp(fuzz::Input& input) {
    date_parts p;
    p.year = input.between(1, 9998);
    p.month = input.between(1, 12);
    p.day = input.between(1, date_month_length(p.year, p.month));
    p.hour = input.between(0, 23);
    p.minute = input.between(0, 59);
    p.second = input.between(0, 59);
    p.offset = 60 * input.between(-1439, 1439);
    const int days = input.between(-400, 400);
    const int seconds = input.between(-100000, 100000);
    const char* const dates[] = {"%F",        "%Y/%-m/%d", "%d.%m.%Y", "%-d %B %Y", "%b %dth, %Y",
                                 "%G-W%V-%u", "%Y-%j",     "%d-%b-%Y", "%A %Y%m%d"};
    const char* const times[] = {"%T%:z", "%I:%M:%S %p %z", "%T %z", "%-I:%M:%S%P%:z"};
    const char* const spans[] = {"%+d days %+d secs", "%+d DAY, %+d sec"};
    char sum[64];
    std::snprintf(sum, sizeof sum, input.pick(spans), days, seconds);
    const KazString date = FmtDate(p, input.pick(dates));
    const KazString time = FmtDate(p, input.pick(times));
    KazString text = input.flag() ? date + " " + time : time + ", " + date;
    text = input.flag() ? text + " " + sum : KazString(sum) + " " + text;
    std::int64_t moment = 0, meant = 0;
    FUZZ_CHECK(date_join(&p, &moment) || p.year == 1);
    moment += days * std::int64_t{86400} + seconds;
    const int status = partime(text, &meant);
    if (moment < date_min)
        FUZZ_CHECK(status == partime_range);
    else if (p.year > 1)
        FUZZ_CHECK(status == partime_ok && meant == moment);
}

/// A moment that is written in full is read again, in any zone.
void momentsComeBack(fuzz::Input input) {
    constexpr std::int64_t day = 86400;
    const auto moment = input.between(date_min + day, date_max - day);
    const int minutes = input.between(-1439, 1439), distance = minutes < 0 ? -minutes : minutes;
    char zone[16];
    std::snprintf(zone, sizeof zone, "%c%02d:%02d", minutes < 0 ? '-' : '+', distance / 60,
                  distance % 60);
    for (const char* format :
         {"@iso", "@basic", "@mail", "@%s", "%G-W%V-%uT%T%:z", "%A, %-d %B %Y %r %:z"}) {
        std::int64_t read = 0;
        FUZZ_CHECK(partime(FmtDate(moment, format, zone), &read) == partime_ok && read == moment);
    }
}

/// An age is read again within its unit. Up to a thousand years, whose leap days stay within
/// a year.
void agesComeBack(fuzz::Input input) {
    constexpr std::int64_t day = 86400;
    const std::int64_t age =
        input.between<std::int64_t>(0, std::int64_t{1} << 35) >> input.between(0, 35);
    partime_options options;
    options.now = 1773324309;
    options.zone = "+01:00";
    const std::int64_t moment = input.flag() ? options.now - age : options.now + age;
    const std::string text = FmtAge(moment, options.now).getValue();
    partime_result result;
    FUZZ_CHECK(partime(text.c_str(), &options, &result) == partime_ok);
    std::int64_t unit = 1; // of "now" and seconds
    for (const auto& [name, seconds] : {std::pair<const char*, std::int64_t>{"minute", 60},
                                        {"hour", 3600},
                                        {"day", day},
                                        {"week", 7 * day},
                                        {"month", 31 * day},
                                        {"year", 365 * day}})
        if (text.find(name) != text.npos)
            unit = seconds;
    FUZZ_CHECK(result.seconds > moment - unit && result.seconds < moment + unit);
}

} // namespace

void fuzz::harness(Input& input) {
    const char* const languages[] = {"en", "de", "es", "fr", "it", "nl"};
    date_set_language("en");
    partsAddUp(input);
    momentsComeBack(input);
    agesComeBack(input);
    date_set_language(input.pick(languages));
    const char* const zones[] = {"UTC", "+01:00", "-2359", "local"};
    partime_options options;
    options.now = input.between(date_min, date_max);
    options.zone = input.pick(zones);
    options.order = input.flag() ? date_order_dmy : date_order_mdy; // never that of ToolInfo
    std::string text;
    if (input.flag())
        while (!input.empty() && text.size() < 100)
            text += input.pick(vocabulary) + std::string(input.flag() ? " " : "");
    else
        text = input.cText(300);
    spellingDoesNotCount(text, options);
}
