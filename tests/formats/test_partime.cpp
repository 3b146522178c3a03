// SPDX-License-Identifier: Apache-2.0
#include "tools/formats/datetime.h"

#include "tools/config/toolinfo.h"

#include "kit/table.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

/// Thursday, 12 March 2026, 14:05:09 UTC; in the zone of these tests an hour later.
constexpr std::int64_t now = 1773324309;

partime_options options(date_order_enum order = date_order_unknown) {
    partime_options result;
    result.now = now;
    result.zone = "+01:00";
    result.order = order;
    return result;
}

std::string zoneText(int minutes) {
    char text[16];
    std::snprintf(text, sizeof text, "%c%02d:%02d", minutes < 0 ? '-' : '+',
                  std::abs(minutes) / 60 % 24, std::abs(minutes) % 60);
    return text;
}

/// What a text means, by the clock of the zone that it was read in, without the zone of
/// these tests, and then without midnight; on failure the status and the place.
std::string meaning(const std::string& text, date_order_enum order = date_order_unknown) {
    const partime_options asked = options(order);
    partime_result result;
    const int status = partime(text.c_str(), &asked, &result);
    if (status != partime_ok)
        return std::to_string(status) + " at " + std::to_string(result.errorAt);
    date_parts parts;
    EXPECT_TRUE(date_split(result.seconds, zoneText(result.offset / 60).c_str(), &parts));
    parts.nanosecond = result.nanosecond;
    std::string shown =
        FmtDate(parts, result.nanosecond != 0 ? "%F %T.%-N %:z" : "%F %T %:z").getValue();
    for (const std::string usual : {" +01:00", " 00:00:00"}) {
        if (!shown.ends_with(usual))
            break;
        shown.resize(shown.size() - usual.size());
    }
    return shown;
}

/// "text = meaning | ..."
void expectReadings(const char* readings) {
    for (const auto& [text, expected] : kit::pairs(readings))
        EXPECT_EQ(meaning(text), expected) << text;
}

class Partime : public testing::Test {
protected:
    void SetUp() override { date_set_language("en"); }
    void TearDown() override {
        TI_Vasg("date_order", "");
        date_set_language(nullptr);
    }

    moxkit::TempTree tree_;

private:
    moxkit::ScopedEnv toolInfo_{"ToolInfo", tree_.write("ToolInfo", "x=y\n").c_str()};
};

TEST_F(Partime, ADateHasManyForms) {
    for (const std::string& text : kit::parts(
             "2026-03-14|2026-3-14|2026/03/14|2026.3.14|20260314|2026-073|2026-W11-6|2026-w11-6|"
             "2026W116|14.3.2026|14.03.26|14.3.|14/3/2026|3/14/2026|14/3/26|3/14/26|14-3-2026|"
             "3-14-2026|14/3|3/14|14 March 2026|14 MAR 26|14Mar2026|14th of March, 2026|"
             "14. March 2026|14. mar. 2026|14 March|14th March|14-Mar-2026|14-march-2026|"
             "March 14, 2026|march 14,2026|March 14th, 2026|Mar. 14. 2026|March 14|Sat, 14 Mar "
             "2026|"
             "Saturday, 14 March|14 March 2026 sat.|on 14.3.2026|2026-03-14 (a Saturday)|"
             "(the) 14 (of) March|\t2026-03-14,\r\n"))
        EXPECT_EQ(meaning(text), "2026-03-14") << text;
    expectReadings("2026-03 = 2026-03-01 | March 2026 = 2026-03-01 | sept 2025 = 2025-09-01 | "
                   "2026-W11 = 2026-03-09 | 2026W11 = 2026-03-09 | 2020-W53-7 = 2021-01-03 | "
                   "2024-366 = 2024-12-31 | 1.1.69 = 1969-01-01 | 31 dec 68 = 2068-12-31 | "
                   "3/3 = 2026-03-03 | 29 February 2024 = 2024-02-29 | 9999-12-31 = 9999-12-31 | "
                   "0001-01-01 02:00 = 0001-01-01 02:00:00 | "
                   "0000-12-31T23:00-02:00 = 0000-12-31 23:00:00 -02:00");
}

TEST_F(Partime, TheOrderOfDayAndMonthIsSaidOrFound) {
    const char* march = "2026-03-04";
    const char* april = "2026-04-03";
    for (const char* text : {"3/4/2026", "3/4/26", "3/4", "03-04-2026"}) {
        EXPECT_EQ(meaning(text, date_order_mdy), march);
        EXPECT_EQ(meaning(text, date_order_dmy), april);
        EXPECT_EQ(meaning(text), "-4 at 0");
        TI_Vasg("date_order", "mdy");
        EXPECT_EQ(meaning(text), march);
        TI_Vasg("date_order", "dmy");
        EXPECT_EQ(meaning(text), april);
        TI_Vasg("date_order", "ymd");
        EXPECT_EQ(meaning(text), "-4 at 0");
    }
    EXPECT_EQ(meaning("13/4", date_order_mdy), "-3 at 0");
    EXPECT_EQ(meaning("3.4.2026", date_order_mdy), april) << "points: the day first, always";
    EXPECT_EQ(meaning("  32/1/2026"), "-3 at 2");
    expectReadings("13/13 = -3 at 0 | 0/4 = -3 at 0 | 1-2-26 = -4 at 0 | 13-14-26 = -4 at 0 | "
                   "noon 1-2-26 = -4 at 5");
}

TEST_F(Partime, ATimeHasManyForms) {
    for (const std::string& text :
         kit::parts("14:05|2:05pm|2:05 PM|2:05 p.m.|02:05:00 P.M|at "
                    "14:05|14:05:00|14:05:00.000|today 14:05|"
                    "14:05 today|20260312T1405|2026-03-12T14:05|202603121405|2026-03-12t140500|"
                    "12 March 2026T14:05|20260312140500"))
        EXPECT_EQ(meaning(text), "2026-03-12 14:05:00") << text;
    expectReadings("9 am = 2026-03-12 09:00:00 | 9 a.m. tomorrow = 2026-03-13 09:00:00 | "
                   "12am = 2026-03-12 | 12:30 am = 2026-03-12 00:30:00 | "
                   "12 pm = 2026-03-12 12:00:00 | noon = 2026-03-12 12:00:00 | "
                   "midnight = 2026-03-12 | 2026-03-12T14 = 2026-03-12 14:00:00 | "
                   "2026-073T14 = 2026-03-14 14:00:00 | 2026W116T14:05 = 2026-03-14 14:05:00 | "
                   "14:05:09.5 = 2026-03-12 14:05:09.500000000 | "
                   "14:05:09,1234567899 tomorrow = 2026-03-13 14:05:09.123456789 | "
                   "20260312T140509.25Z = 2026-03-12 14:05:09.250000000 +00:00 | "
                   "24:00 = 2026-03-13 | 2026-12-31 24:00:00 = 2027-01-01 | "
                   "2026-12-31T24 = 2027-01-01 | "
                   "2016-12-31 23:59:60Z = 2017-01-01 00:00:00 +00:00 | "
                   "12:30:60.5 = 2026-03-12 12:31:00.500000000 | "
                   "Sat Mar 14 14:05:09 2026 = 2026-03-14 14:05:09 | "
                   "Sun Mar 14 02:05:09 PM UTC 2027 = 2027-03-14 14:05:09 +00:00 | "
                   "Mar 14 14:05:09 -0500 2027 = 2027-03-14 14:05:09 -05:00 | "
                   "Sun Feb 29 00:00:00 2032 = 2032-02-29");
}

TEST_F(Partime, AZoneIsANameOrADistance) {
    expectReadings("2026-03-12 14:05Z = 2026-03-12 14:05:00 +00:00 | "
                   "2026-03-12 14:05 utc = 2026-03-12 14:05:00 +00:00 | "
                   "GMT 2026-03-12 14:05 = 2026-03-12 14:05:00 +00:00 | "
                   "2026-03-12 UT = 2026-03-12 00:00:00 +00:00 | "
                   "14:05 EST = 2026-03-12 14:05:00 -05:00 | "
                   "14:05 edt = 2026-03-12 14:05:00 -04:00 | "
                   "14:05 CST = 2026-03-12 14:05:00 -06:00 | "
                   "14:05 CDT = 2026-03-12 14:05:00 -05:00 | "
                   "14:05 MST = 2026-03-12 14:05:00 -07:00 | "
                   "14:05 MDT = 2026-03-12 14:05:00 -06:00 | "
                   "14:05 PST = 2026-03-12 14:05:00 -08:00 | "
                   "14:05 PDT = 2026-03-12 14:05:00 -07:00 | "
                   "14:05+02 = 2026-03-12 14:05:00 +02:00 | "
                   "14:05 -0330 = 2026-03-12 14:05:00 -03:30 | "
                   "2:05 pm +05:45 2026-03-12 = 2026-03-12 14:05:00 +05:45 | "
                   "14:05 -0000 = 2026-03-12 14:05:00 +00:00 | "
                   "noon +0100 = 2026-03-12 12:00:00 | "
                   "14:05 UTC+2 = 2026-03-12 14:05:00 +02:00 | "
                   "14:05 GMT-3:30 = 2026-03-12 14:05:00 -03:30 | UTC+11 = -2 at 0 | "
                   "01:00 +1100 = 2026-03-13 01:00:00 +11:00 | "
                   "14:05 +2 hours = 2026-03-12 16:05:00 | "
                   "14:05 +10 hours = 2026-03-13 00:05:00 | "
                   "14:05+02 +1 day = 2026-03-13 14:05:00 +02:00 | "
                   "now UTC = 2026-03-12 14:05:09 +00:00 | "
                   "Thu, 12 Mar 2026 14:05:09 +0000 (UTC) = 2026-03-12 14:05:09 +00:00");
    for (const char* name : {"CET", "IST", "BST"})
        EXPECT_EQ(meaning("14:05 " + std::string(name)), "-2 at 6");
}

TEST_F(Partime, DaysAndSpansCountFromNow) {
    EXPECT_EQ(meaning(" @253402300799 "), "10000-01-01 00:59:59");
    expectReadings("now = 2026-03-12 15:05:09 | today = 2026-03-12 | yesterday = 2026-03-11 | "
                   "Tomorrow, 9am = 2026-03-13 09:00:00 | tomorrow now = 2026-03-13 15:05:09 | "
                   "Thursday = 2026-03-12 | this thurs = 2026-03-12 | next thur. = 2026-03-19 | "
                   "last Thu = 2026-03-05 | friday noon = 2026-03-13 12:00:00 | "
                   "wed = 2026-03-18 | next tues = 2026-03-17 | last wednesday = 2026-03-11 | "
                   "last fri = 2026-03-06 | +3 days = 2026-03-15 15:05:09 | "
                   "-1 hr = 2026-03-12 14:05:09 | now+3hours = 2026-03-12 18:05:09 | "
                   "today -2 weeks = 2026-02-26 | 3 days ago = 2026-03-09 15:05:09 | "
                   "an hour ago = 2026-03-12 14:05:09 | a quarter ago = 2025-12-12 15:05:09 | "
                   "2 hours, 5 minutes and 9 secs ago = 2026-03-12 13:00:00 | "
                   "2 weeks from now = 2026-03-26 15:05:09 | "
                   "in 2 days and 1 hour = 2026-03-14 16:05:09 | "
                   "in a month at noon = 2026-04-12 12:00:00 | next year = 2027-03-12 15:05:09 | "
                   "last second = 2026-03-12 15:05:08 | next quarter = 2026-06-12 15:05:09 | "
                   "monday +1 week 9:00 = 2026-03-23 09:00:00 | "
                   "2026-01-31 +1 month = 2026-02-28 | 2026-01-31 +1 day +1 month = 2026-03-01 | "
                   "2024-02-29 -1 year = 2023-02-28 | 2024-02-29 +4 years = 2028-02-29 | "
                   "+999999999 days -999999998 days = 2026-03-13 15:05:09 | "
                   "@0 = 1970-01-01 01:00:00 | @-1.25 = 1970-01-01 00:59:58.750000000");
}

TEST_F(Partime, LanguagesAddTheirNames) {
    const std::pair<const char*, const char*> cases[] = {
        {"en", "12. März 2026 = -2 at 0 | 3 ago 2026 = -2 at 0"},
        {"de", "Donnerstag, 12. März 2026 = 2026-03-12 | "
               "Do 12 Mär 2026 14:05:09 = 2026-03-12 14:05:09 | 12 Dez 2025 = 2025-12-12 | "
               "12 March = 2026-03-12"},
        {"es", "3 ago 2026 = 2026-08-03 | 3 days ago = 2026-03-09 15:05:09 | próximo = -2 at 0 | "
               "mié = 2026-03-18 | miércoles 11 mar = 2026-03-11"},
        {"fr", "jeu. 12 mars 2026 = 2026-03-12 | 1 févr. 2026 = 2026-02-01 | "
               "1-déc.-2025 = 2025-12-01 | mar. 2026 = 2026-03-01"},
        {"it", "mar 2026 = 2026-03-01 | giovedì 12 marzo = 2026-03-12"},
        {"nl", "do 12 mrt 2026 = 2026-03-12 | next za = 2026-03-14"}};
    for (const auto& [language, readings] : cases) {
        SCOPED_TRACE(language);
        ASSERT_TRUE(date_set_language(language));
        expectReadings(readings);
    }
}

TEST_F(Partime, FailuresSayWhatAndWhere) {
    EXPECT_EQ(meaning(""), "-1 at 0");
    EXPECT_EQ(meaning(" \t\n"), "-1 at 0");
    expectReadings("2026 = -2 at 0 | 12 = -2 at 0 | 3 days = -2 at 0 | 1234567 = -2 at 0 | "
                   "(now) = -2 at 0 | and = -2 at 0 | UTC = -2 at 0 | "
                   "today (and then = -2 at 6 | today (a (b) c) = -2 at 13 | "
                   "tomorrow foo = -2 at 9 | 12.3 = -2 at 0 | 2026-3 = -2 at 0 | "
                   "2026-03-12x = -2 at 10 | 2026-03-12-03 = -2 at 10 | 2026-03/12 = -2 at 7 | "
                   "14:5 = -2 at 0 | 14:05:9 = -2 at 0 | 14:05 +5 = -2 at 6 | "
                   "2026-03-12 +0200 = -2 at 11 | 2026-03-12T9:00 = -2 at 11 | March = -2 at 0 | "
                   "12 Foo 2026 = -2 at 0 | 12-Mar-26 = -2 at 0 | Mar 14 14:05 2026 = -2 at 13 | "
                   "next noon = -2 at 0 | this week = -2 at 0 | in 5 = -2 at 0 | "
                   "1234567890 days ago = -2 at 0 | @ = -2 at 0 | today\x01 = -2 at 5 | "
                   "@+5 = -2 at 0 | 2026-02-29 = -3 at 0 | 2026-02-30 foo = -3 at 0 | "
                   "foo 2026-02-30 = -2 at 0 | 2026-00-10 = -3 at 0 | 2026-366 = -3 at 0 | "
                   "2026-000 = -3 at 0 | 2026-W54 = -3 at 0 | 2026-W10-8 = -3 at 0 | "
                   "today 25:00 = -3 at 6 | 24:01 = -3 at 0 | 24:00:00.1 = -3 at 0 | "
                   "14:60 = -3 at 0 | 14:05:61 = -3 at 0 | 13 pm = -3 at 0 | 0:30 am = -3 at 0 | "
                   "2026-03-12T14:60 = -3 at 11 | 14:05+24:00 = -3 at 5 | 29.2. = -3 at 0 | "
                   "31.4. = -3 at 0 | 0001-01-01 = -3 at 0 | 0000-05-05 = -3 at 0 | "
                   "now +9000 years = -3 at 0 | now -999999999 years = -3 at 0 | "
                   "+999999999 weeks = -3 at 0 | +999999999 hours = -3 at 0 | "
                   "@253402300800 = -3 at 0 | @99999999999999999999 = -3 at 0 | "
                   "2026-03-12 2026-03-12 = -5 at 11 | today tomorrow = -5 at 6 | "
                   "14:05 noon = -5 at 6 | 14:05 now = -5 at 6 | 14:05Z UTC = -5 at 7 | "
                   "mon tue = -5 at 4 | 2026-03-12, Friday = -5 at 12 | "
                   "next Thursday 2026-03-12 = -5 at 0 | @5 noon = -5 at 3 | noon @5 = -5 at 5");
    EXPECT_EQ(meaning(std::string(252, ' ') + "now"), "2026-03-12 15:05:09");
    EXPECT_EQ(meaning(std::string(253, ' ') + "now"), "-2 at 0");
    std::int64_t seconds = 77;
    EXPECT_EQ(partime(nullptr, &seconds), partime_empty);
    EXPECT_EQ(partime("2026-02-29", &seconds), partime_range);
    EXPECT_EQ(seconds, 77);
    EXPECT_EQ(partime("@5", nullptr), partime_ok);
    partime_result result;
    result.seconds = result.nanosecond = result.offset = result.given = 77;
    EXPECT_EQ(partime("now foo", nullptr, &result), partime_syntax);
    EXPECT_TRUE(result.seconds == 77 && result.nanosecond == 77 && result.offset == 77 &&
                result.given == 77 && result.errorAt == 4);
    EXPECT_STREQ(partime_error_text(partime_ok), "");
    EXPECT_STREQ(partime_error_text(partime_conflict), "contradicts itself");
    EXPECT_STRNE(partime_error_text(-99), "");
}

TEST_F(Partime, ItTellsWhatWasStated) {
    for (const auto& [text, given] :
         kit::pairs("now = time | today = date | friday = date | noon = time | 2026-03-12 = date | "
                    "2026-03-12T14Z = date time zone | 14:05 +3 days = time relative | "
                    "next week = relative | 2026-03-12 UTC = date zone | @5 = date time")) {
        const partime_options asked = options();
        partime_result result;
        result.errorAt = 5;
        EXPECT_EQ(partime(text.c_str(), &asked, &result), partime_ok);
        const std::pair<int, const char*> parts[] = {{partime_given_date, "date"},
                                                     {partime_given_time, "time"},
                                                     {partime_given_zone, "zone"},
                                                     {partime_given_relative, "relative"}};
        for (const auto& [bit, part] : parts)
            EXPECT_EQ((result.given & bit) != 0, given.find(part) != given.npos) << text << part;
        EXPECT_EQ(result.errorAt, 0);
    }
    std::int64_t seconds = 0;
    const std::int64_t before = date_now();
    EXPECT_EQ(partime("now", &seconds), partime_ok);
    EXPECT_TRUE(before <= seconds && seconds <= date_now());
}

} // namespace
