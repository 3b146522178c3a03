// SPDX-License-Identifier: Apache-2.0
#include "tools/formats/datetime.h"

#include "tools/config/toolinfo.h"

#include "kit/sweep.h"
#include "kit/table.h"
#include "testkit/env.h"
#include "testkit/random.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <string>
#include <vector>

namespace {

constexpr std::int64_t day = 86400;
/// Thursday, 12 March 2026, 14:05:09 UTC: days since 1970 are 56 years with 14 leap
/// days, January, February and eleven days.
constexpr std::int64_t sample = (56 * 365 + 14 + 31 + 28 + 11) * day + 14 * 3600 + 5 * 60 + 9;

std::string text(std::int64_t moment, const std::string& format, const char* zone = "UTC") {
    return FmtDate(moment, format.c_str(), zone).getValue();
}

/// A configuration without dates, and no language of an earlier test.
class DateTime : public testing::Test {
protected:
    void SetUp() override { date_set_language(nullptr); }
    void TearDown() override {
        for (const char* name : {"date_format", "time_format", "date_language", "date_order"})
            TI_Vasg(name, "");
        date_set_language(nullptr);
    }

private:
    moxkit::TempTree tree_;
    moxkit::ScopedEnv toolInfo_{"ToolInfo", tree_.write("ToolInfo", "x=y\n").c_str()};
};

TEST_F(DateTime, ZonesAreReadByTheirText) {
    for (const auto& [zone, offset] :
         kit::pairs("utc = 0 | gmt = 0 | z = 0 | +02 = 7200 | -0330 = -12600 | +23:59 = 86340 | "
                    "-23:59 = -86340 | +00:00 = 0")) {
        date_parts parts;
        ASSERT_TRUE(date_split(sample, zone.c_str(), &parts)) << zone;
        EXPECT_EQ(std::to_string(parts.offset), offset) << zone;
        std::int64_t joined = 0;
        EXPECT_TRUE(date_join(&parts, zone.c_str(), &joined) && joined == sample) << zone;
        EXPECT_FALSE(date_split(sample, zone.c_str(), nullptr));
    }
    for (const char* zone : {"Europe/Berlin", "+2", "+24", "+1:00", "+01:60", "+01:0", "02:00", "+",
                             "+ 1", "UTC+1", "+0000x", "EST", " UTC", "+1a"}) {
        date_parts parts;
        std::int64_t seconds = 77;
        EXPECT_FALSE(date_split(sample, zone, &parts)) << zone;
        EXPECT_FALSE(date_join(&parts, zone, &seconds)) << zone;
        EXPECT_EQ(text(sample, "%Y", zone), "") << zone;
        partime_options options;
        options.zone = zone;
        EXPECT_EQ(partime("2026-03-12T14:05Z", &options, nullptr), partime_syntax) << zone;
        EXPECT_EQ(seconds, 77);
    }
}

TEST_F(DateTime, WhatDoesNotExistIsRefused) {
    date_parts good;
    ASSERT_TRUE(date_split(sample, "+01:00", &good));
    std::int64_t seconds = 77;
    const std::pair<int date_parts::*, std::vector<int>> outside[] = {
        {&date_parts::year, {-1, 0, 10001, INT_MAX}},
        {&date_parts::month, {0, 13, INT_MIN}},
        {&date_parts::day, {0, 32}},
        {&date_parts::hour, {-1, 24}},
        {&date_parts::minute, {60}},
        {&date_parts::second, {60}},
        {&date_parts::nanosecond, {-1, 1'000'000'000}}};
    for (const auto& [field, values] : outside)
        for (const int value : values) {
            date_parts bad = good;
            bad.*field = value;
            EXPECT_FALSE(date_join(&bad, &seconds)) << value;
            EXPECT_FALSE(date_join(&bad, "UTC", &seconds)) << value;
            EXPECT_TRUE(FmtDate(bad, "%Y").isEmpty()) << value;
        }
    date_parts bad = good;
    bad.offset = 86341;
    EXPECT_FALSE(date_join(&bad, &seconds));
    EXPECT_TRUE(date_join(&bad, "+01:00", &seconds) && seconds == sample);
    seconds = 77;
    EXPECT_FALSE(date_join(nullptr, &seconds) || date_join(&good, nullptr));
    for (const std::int64_t moment : {date_min - 1, date_max + 1, INT64_MIN, INT64_MAX}) {
        EXPECT_FALSE(date_split(moment, "UTC", &good));
        EXPECT_EQ(text(moment, "%Y"), "");
        EXPECT_EQ(text(moment, "%Y", nullptr), "");
    }
    EXPECT_EQ(seconds, 77);
    EXPECT_EQ(date_month_length(2026, 0) + date_month_length(2026, 13), 0);
    EXPECT_EQ(date_month_length(1900, 2) + date_month_length(2000, 2), 28 + 29);
    for (const auto& [year, month, date] :
         {std::array{2026, 2, 29}, {-1, 1, 1}, {10001, 1, 1}, {2026, 13, 1}})
        EXPECT_EQ(date_weekday(year, month, date), -1);
    EXPECT_EQ(date_weekday(1, 1, 1), 1) << "Monday";
}

TEST_F(DateTime, TheEndsOfTheRangeMayBeShifted) {
    EXPECT_EQ(text(date_min, "%F %T %G-W%V-%u %C %j %s", "-01:00"),
              "0000-12-31 23:00:00 0000-W52-7 00 366 -62135596800");
    EXPECT_EQ(text(date_max, "%FT%T %y %G %C", "+00:01"), "10000-01-01T00:00:59 00 9999 100");
    date_parts parts;
    std::int64_t seconds = 0;
    ASSERT_TRUE(date_split(date_max, "+12", &parts));
    EXPECT_EQ(parts.year, 10000);
    EXPECT_TRUE(date_join(&parts, &seconds) && seconds == date_max);
    parts.offset -= 60;
    EXPECT_FALSE(date_join(&parts, &seconds));
}

/// All without a zone or a name is the model's to show.
TEST_F(DateTime, FormatsGoBeyondThoseOfDate) {
    for (const auto& [format, expected] :
         kit::pairs("%10z|%10:z =      +0000|    +00:00 | %d %::::z %ä = 12 %::::z %ä | "
                    "@iso = 2026-03-12T14:05:09+00:00 | @basic = 20260312T140509+0000 | "
                    "@mail = Thu, 12 Mar 2026 14:05:09 +0000 | @long = 12 March 2026 | "
                    "@long  = @long  | @isO %d = @isO 12 | @ = @ | @%s = @1773324309"))
        EXPECT_EQ(text(sample, format), expected) << format;
    EXPECT_EQ(text(sample, ""), "");
    EXPECT_EQ(text(sample, "%Z %z %#Z", "+05:30"), "+05:30 +0530 +05:30");
    EXPECT_EQ(text(sample, "%Z %#Z", "gmt"), "UTC utc");

    // A format counts up to 1024 bytes.
    EXPECT_EQ(text(sample, std::string(1024, 'x')), std::string(1024, 'x'));
    EXPECT_EQ(text(sample, std::string(1025, 'x')), "");
    std::string wide, expected;
    for (int i = 0; i < 204; ++i) {
        wide += "%255S";
        expected += std::string(254, '0') + "9";
    }
    EXPECT_EQ(text(sample, wide), expected);
}

TEST_F(DateTime, PartsAreShownAsTheyAre) {
    const date_parts parts = {2026, 3, 12, 14, 5, 9, 120'000'000, -12600};
    EXPECT_EQ(FmtDate(parts, "%T.%N %3N %-3N %12N %_N %Z %:z"),
              "14:05:09.120000000 120 12 120000000000 12        -03:30 -03:30");
    EXPECT_EQ(FmtTime(parts, "@iso"), "2026-03-12T14:05:09-03:30");
    EXPECT_EQ(FmtTime(parts), "14:05:09");
    EXPECT_EQ(FmtDate(parts), "2026-03-12");
    int nanosecond = -1;
    const std::int64_t now = date_now(&nanosecond);
    EXPECT_TRUE(date_now() - now <= 60 && nanosecond >= 0 && nanosecond < 1'000'000'000);
}

TEST_F(DateTime, LanguagesFollowTheToolThenTheConfiguration) {
    struct Case {
        const char* language;
        const char* expected;
    };
    for (const Case c : {Case{"en", "3 March 2026|03/03/26|Tue Mar  3 14:05:09 2026|MARCH"},
                         {"de", "3. März 2026|03.03.2026|Di 03 Mär 2026 14:05:09|MäRZ"},
                         {"es", "3 de marzo de 2026|03/03/2026|mar 03 mar 2026 14:05:09|MARZO"},
                         {"fr", "3 mars 2026|03/03/2026|mar. 03 mars 2026 14:05:09|MARS"},
                         {"it", "3 marzo 2026|03/03/2026|mar 03 mar 2026 14:05:09|MARZO"},
                         {"nl", "3 maart 2026|03-03-2026|di 03 mrt 2026 14:05:09|MAART"}}) {
        const auto shown = [&] {
            const std::int64_t tuesday = sample - 9 * day;
            return text(tuesday, "@long") + "|" + text(tuesday, "%x|%c|%^B");
        };
        EXPECT_TRUE(date_set_language(c.language));
        EXPECT_EQ(shown(), c.expected);
        EXPECT_STREQ(date_language(), c.language);
        EXPECT_TRUE(date_set_language(""));
        TI_Vasg("date_language", c.language);
        EXPECT_EQ(shown(), c.expected);
        EXPECT_FALSE(date_set_language("EN") || date_set_language("deu"));
        EXPECT_STREQ(date_language(), c.language);
        EXPECT_EQ(text(sample, "@mail"), "Thu, 12 Mar 2026 14:05:09 +0000");
    }
    TI_Vasg("date_language", "tlh");
    EXPECT_STREQ(date_language(), "en");
}

TEST_F(DateTime, FormatsFollowTheConfiguration) {
    const auto shown = [] {
        return std::string(FmtDate(sample, nullptr, "UTC").getValue()) + "|" +
               FmtTime(sample, nullptr, "UTC").getValue() + "|" +
               FmtTime(sample, "@date", "UTC").getValue() + "|" + text(sample, "@time");
    };
    EXPECT_EQ(shown(), "2026-03-12|14:05:09|2026-03-12|14:05:09");
    TI_Vasg("date_format", "%d.%m.%Y");
    TI_Vasg("time_format", "%-I:%M %P");
    EXPECT_EQ(shown(), "12.03.2026|2:05 pm|12.03.2026|2:05 pm");
    TI_Vasg("date_format", "@long");
    TI_Vasg("time_format", "@time"); // itself: as if it were not there
    EXPECT_EQ(shown(), "12 March 2026|14:05:09|12 March 2026|14:05:09");
    TI_Vasg("time_format", "@date");
    EXPECT_EQ(text(sample, "@time"), "14:05:09");
    TI_Vasg("date_format", std::string(1025, 'x').c_str());
    EXPECT_EQ(text(sample, "@date"), "");
}

TEST_F(DateTime, AgesAreToldInTheLargestUnit) {
    EXPECT_EQ(FmtAge(sample, sample), "now");
    for (const auto& [seconds, told] : kit::pairs(
             "1 = 1 second | 59 = 59 seconds | 60 = 1 minute | 3599 = 59 minutes | 3600 = 1 hour | "
             "86399 = 23 hours | 86400 = 1 day | 1209599 = 13 days | 1209600 = 2 weeks | "
             "5183999 = 8 weeks | 5184000 = 2 months | 63071999 = 24 months | "
             "63072000 = 2 years | 315360000 = 10 years")) {
        const std::int64_t age = std::stoll(seconds);
        EXPECT_EQ(FmtAge(sample - age, sample).getValue(), told + " ago");
        EXPECT_EQ(FmtAge(sample + age, sample).getValue(), "in " + told);
    }
    EXPECT_EQ(FmtAge(INT64_MIN, INT64_MAX), "584942417355 years ago"); // 2^64 / 31536000
    EXPECT_EQ(FmtAge(INT64_MAX, INT64_MIN), "in 584942417355 years");
}

TEST_F(DateTime, TextsSurviveTheEndOfMemory) {
    date_set_language("de");
    const std::string wide = "%255d%255d%255d" + std::string(900, 'x');
    kit::sweepQuestion("short", [] { return text(sample, "%A, @long"); });
    kit::sweepQuestion("long", [&] { return text(sample, wide); });
    kit::sweepQuestion("local", [] { return text(sample, "%F %T", nullptr); });
    kit::sweepQuestion("time",
                       [] { return std::string(FmtTime(sample, "@iso", "+02").getValue()); });
    kit::sweepQuestion("age", [] { return std::string(FmtAge(sample, 0).getValue()); });
}

} // namespace
