// SPDX-License-Identifier: Apache-2.0
// Dates beside the programs whose users expect the same of them: GNU date, Python's
// datetime and zoneinfo, and the locales of the C library. Everything that is
// compared is made in the run.
#include "tools/formats/datetime.h"

#include "kit/random.h"
#include "kit/table.h"
#include "testkit/env.h"
#include "testkit/process.h"

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

/// What a program of the host answers, a line for each line of input.
Lines answers(Lines command, const std::string& input, const std::string& zone = "UTC0") {
    moxkit::RunOptions options;
    options.input = input;
    options.env = {{"TZ", zone}, {"LC_ALL", "C"}};
    command.insert(command.begin(), "/usr/bin/env");
    const moxkit::Result result = moxkit::run(command, options);
    EXPECT_EQ(result.status, 0) << result.err;
    return kit::lines(result.out);
}

Lines python(const std::string& script, const std::string& input) {
    return answers({"python3", "-c", script}, input);
}

/// The zone of this process.
class LocalZone {
public:
    explicit LocalZone(const std::string& name) : variable_("TZ", name.c_str()) { tzset(); }

private:
    moxkit::ScopedEnv variable_;
};

std::int64_t randomMoment(moxkit::Random& rng, std::int64_t low, std::int64_t high) {
    return low + static_cast<std::int64_t>(rng.bits() % static_cast<std::uint64_t>(high - low + 1));
}

std::string dateOf(std::int64_t moment, const std::string& format, const char* zone = nullptr) {
    return FmtDate(moment, format.c_str(), zone).getValue();
}

class DateOracles : public testing::Test {
protected:
    void SetUp() override { date_set_language("en"); }
    void TearDown() override { date_set_language(nullptr); }

    kit::Random rng_;
};

/// Every letter with flags and widths, as far as both are meant to agree.
Lines conversions() {
    Lines result;
    for (const std::string prefix : {"", "-", "_", "0", "^", "#", "5", "-5", "_12", "012", "^8",
                                     "#9", "_-", "-_3", "_0", "3", "1"})
        for (const std::string letter :
             {"a", "A", "b", "B", "C", "d", "D", "e", "F", "g",  "G",   "h",    "H", "I",
              "j", "k", "l", "m", "M", "N", "p", "P", "q", "r",  "R",   "s",    "S", "T",
              "u", "U", "V", "w", "W", "X", "y", "Y", "z", ":z", "::z", ":::z", "Z", "x"}) {
            const bool hasWidth = prefix.find_first_of("123456789") != prefix.npos;
            const bool isBlankFilled = letter == "F" || letter.back() == 'z';
            const bool isMixed = letter == "N" && prefix == "_-"; // read as one flag there
            if (!(hasWidth && isBlankFilled) && !isMixed)
                result.push_back("%" + prefix + letter);
        }
    return result;
}

TEST_F(DateOracles, ConversionsGiveWhatDateGives) {
    const Lines formats = conversions();
    std::string joined = "+";
    for (const std::string& format : formats)
        joined += format + "|";
    for (const std::string zone : {"UTC0", "America/St_Johns", "Europe/Amsterdam"}) {
        const LocalZone local(zone);
        std::vector<std::int64_t> moments = {date_min + 86400, -1, 0, 951782400, date_max - 86400};
        for (int i = 0; i < 150; ++i)
            moments.push_back(randomMoment(rng_, date_min + 86400, date_max - 86400));
        std::string input;
        for (const std::int64_t moment : moments)
            input += "@" + std::to_string(moment) + "\n";
        const Lines lines = answers({"date", "-f", "-", joined}, input, zone);
        ASSERT_EQ(lines.size(), moments.size());
        for (std::size_t i = 0; i < moments.size(); ++i) {
            const Lines expected = kit::lines(lines[i], "|");
            ASSERT_EQ(expected.size(), formats.size());
            for (std::size_t f = 0; f < formats.size(); ++f)
                ASSERT_EQ(dateOf(moments[i], formats[f]), expected[f])
                    << formats[f] << " of " << moments[i] << " in " << zone;
        }
    }
}

TEST_F(DateOracles, LocalTimesAreThoseOfZoneinfo) {
    const std::string script = R"python(
import datetime, sys, zoneinfo
utc = datetime.timezone.utc
for line in sys.stdin:
    name, number = line.split()
    zone = zoneinfo.ZoneInfo(name)
    moment = datetime.datetime(1970, 1, 1, tzinfo=utc) + datetime.timedelta(seconds=int(number))
    local = moment.astimezone(zone)
    # The same digits on the clock an hour later and some hours earlier may be skipped or repeated.
    wall = local.replace(tzinfo=None) + datetime.timedelta(minutes=int(number) % 240 - 120)
    back = wall.replace(tzinfo=zone, fold=0).astimezone(utc)
    joined = round((back - datetime.datetime(1970, 1, 1, tzinfo=utc)) / datetime.timedelta(seconds=1))
    print(local.strftime("%Y").zfill(4) + local.strftime("-%m-%dT%H:%M:%S"),
          int(local.utcoffset().total_seconds()), local.tzname(),
          wall.strftime("%Y").zfill(4) + wall.strftime(" %m %d %H %M %S"), joined)
)python";
    std::vector<std::pair<std::string, std::int64_t>> moments;
    for (const std::string zone :
         {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Africa/Casablanca",
          "Asia/Kathmandu", "Africa/Freetown", "Europe/Dublin", "Pacific/Apia", "Asia/Gaza"}) {
        const LocalZone local(zone);
        for (int i = 0; i < 100; ++i)
            moments.emplace_back(
                zone, randomMoment(rng_, date_min + 400 * 86400, date_max - 400 * 86400));
        for (int i = 0; i < 100; ++i)
            moments.emplace_back(zone, randomMoment(rng_, -2000000000, 3000000000));
        // Around the changes of clocks.
        for (std::int64_t t = -1800000000; t < 2000000000; t += 43200 * 37) {
            date_parts before, after;
            ASSERT_TRUE(date_split(t, nullptr, &before) && date_split(t + 86400, nullptr, &after));
            for (int hour = 0; hour < 28 && before.offset != after.offset; hour += 3)
                moments.emplace_back(zone, t + hour * 3600 + rng_.below(3600));
        }
    }
    std::string input;
    for (const auto& [zone, moment] : moments)
        input += zone + " " + std::to_string(moment) + "\n";
    const Lines lines = python(script, input);
    ASSERT_EQ(lines.size(), moments.size());
    for (std::size_t i = 0; i < moments.size(); ++i) {
        const auto& [zone, moment] = moments[i];
        SCOPED_TRACE(lines[i] + " " + zone);
        const LocalZone local(zone);
        date_parts parts;
        ASSERT_TRUE(date_split(moment, "local", &parts));
        const Lines words = kit::parts(lines[i], " ");
        ASSERT_EQ(dateOf(moment, "%Y-%m-%dT%T " + std::to_string(parts.offset) + " %Z"),
                  words[0] + " " + words[1] + " " + words[2]);
        const date_parts wall = {std::stoi(words[3]), std::stoi(words[4]), std::stoi(words[5]),
                                 std::stoi(words[6]), std::stoi(words[7]), std::stoi(words[8])};
        std::int64_t joined = 0;
        ASSERT_TRUE(date_join(&wall, nullptr, &joined));
        ASSERT_EQ(std::to_string(joined), words[9]);
    }
}

TEST_F(DateOracles, SumsOfCalendarUnitsAreThoseOfPython) {
    const std::string script = R"python(
import calendar, datetime, sys, zoneinfo
utc = datetime.timezone.utc
epoch = datetime.datetime(1970, 1, 1, tzinfo=utc)
for line in sys.stdin:
    name, now, months, days, seconds = line.split()
    zone = zoneinfo.ZoneInfo(name)
    wall = (epoch + datetime.timedelta(seconds=int(now))).astimezone(zone).replace(tzinfo=None)
    month = wall.year * 12 + wall.month - 1 + int(months)
    year, month = divmod(month, 12)
    day = min(wall.day, calendar.monthrange(year, month + 1)[1])
    wall = wall.replace(year=year, month=month + 1, day=day) + datetime.timedelta(days=int(days))
    moment = wall.replace(tzinfo=zone).astimezone(utc)
    print((moment - epoch) // datetime.timedelta(seconds=1) + int(seconds))
)python";
    const std::string zone = "America/New_York";
    const LocalZone local(zone);
    std::string input;
    Lines texts;
    std::vector<partime_options> options(300);
    for (partime_options& option : options) {
        const int years = rng_.between(-90, 90), months = rng_.between(-40, 40);
        const int weeks = rng_.between(-60, 60), days = rng_.between(-1, 400);
        const int hours = rng_.between(-50, 50), minutes = rng_.between(-900, 900);
        option.now = randomMoment(rng_, 0, 2000000000);
        const auto part = [](int n, const std::string& unit) {
            return (n < 0 ? " -" : " +") + std::to_string(std::abs(n)) + " " + unit;
        };
        // The order of the items says nothing about the order of the sum.
        texts.push_back(part(hours, "hours") + part(years, "year") + part(minutes, "min") +
                        part(weeks, "weeks") + part(months, "Months") + part(days, "DAYS"));
        input += zone + " " + std::to_string(option.now) + " " +
                 std::to_string(12 * years + months) + " " + std::to_string(7 * weeks + days) +
                 " " + std::to_string(3600 * hours + 60 * minutes) + "\n";
    }
    const Lines lines = python(script, input);
    ASSERT_EQ(lines.size(), texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        partime_result result;
        ASSERT_EQ(partime(texts[i].c_str(), &options[i], &result), partime_ok);
        EXPECT_EQ(std::to_string(result.seconds), lines[i]) << texts[i] << ", " << options[i].now;
        EXPECT_EQ(result.given, partime_given_relative);
    }
}

TEST_F(DateOracles, NamesAreThoseOfTheLocales) {
    const std::string script = R"python(
import re, sys
for name in sys.stdin.read().split():
    text = open("/usr/share/i18n/locales/" + name, encoding="utf-8").read()
    text = re.sub("<U([0-9A-F]+)>", lambda m: chr(int(m[1], 16)), text[text.index("LC_TIME"):])
    for key in "mon", "abmon", "day", "abday":
        names = re.search("^" + key + r'\s+((?:"[^"]*";?/?\s*)+)', text, re.M)[1]
        print(";".join(re.findall('"([^"]*)"', names)))
)python";
    const Lines locales = {"de_DE", "es_ES", "fr_FR", "it_IT", "nl_NL"};
    std::string input;
    for (const std::string& locale : locales) {
        if (!std::filesystem::exists("/usr/share/i18n/locales/" + locale))
            GTEST_SKIP() << "the sources of the locales are not installed";
        input += locale + "\n";
    }
    const Lines lines = python(script, input);
    Lines ours;
    for (const std::string& locale : locales) {
        ASSERT_TRUE(date_set_language(locale.substr(0, 2).c_str()));
        Lines names(4);
        for (int i = 0; i < 12; ++i) {
            const std::int64_t moment = (31 * i + 10) * std::int64_t{86400};
            names[0] += (i > 0 ? ";" : "") + dateOf(moment, "%B", "UTC");
            names[1] += (i > 0 ? ";" : "") + dateOf(moment, "%b", "UTC");
        }
        for (int i = 0; i < 7; ++i) { // from Sunday, 4 January 1970
            names[2] += (i > 0 ? ";" : "") + dateOf((i + 3) * 86400, "%A", "UTC");
            names[3] += (i > 0 ? ";" : "") + dateOf((i + 3) * 86400, "%a", "UTC");
        }
        ours.insert(ours.end(), names.begin(), names.end());
    }
    EXPECT_EQ(ours, lines);
}

} // namespace
