// SPDX-License-Identifier: Apache-2.0
// Words are recognised in English always and in the language in force besides, since files
// outlive a user's settings. English comes first: where a word means something in both, its
// English meaning is the one that holds on every machine.
#include "tools/formats/detail/date_words.h"

#include "tools/formats/detail/ascii.h"

#include <span>

namespace kaz::dates {

namespace {

constexpr int hour = 3600;

constexpr Unit units[] = {
    {"second", {0, 0, 1}},  {"sec", {0, 0, 1}},     {"minute", {0, 0, 60}}, {"min", {0, 0, 60}},
    {"hour", {0, 0, hour}}, {"hr", {0, 0, hour}},   {"day", {0, 1, 0}},     {"week", {0, 7, 0}},
    {"month", {1, 0, 0}},   {"quarter", {3, 0, 0}}, {"year", {12, 0, 0}},
};

struct ZoneName {
    std::string_view name;
    int offset;
};

// Those of RFC 5322, and "UTC".
constexpr ZoneName zones[] = {
    {"Z", 0},           {"UTC", 0},         {"GMT", 0},         {"UT", 0},
    {"EST", -5 * hour}, {"EDT", -4 * hour}, {"CST", -6 * hour}, {"CDT", -5 * hour},
    {"MST", -7 * hour}, {"MDT", -6 * hour}, {"PST", -8 * hour}, {"PDT", -7 * hour},
};

using Names = std::span<const std::string_view>;

/// The place of a name, whose own "." need not be written; -1 when it is not there.
int placeOf(std::string_view word, Names names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::string_view name = names[i];
        if (name.ends_with('.'))
            name.remove_suffix(1);
        if (isSameText(word, name))
            return static_cast<int>(i);
    }
    return -1;
}

int placeOf(std::string_view word, Names names, Names shortNames) {
    const int place = placeOf(word, names);
    return place >= 0 ? place : placeOf(word, shortNames);
}

int monthIn(const Language& language, std::string_view word) {
    return placeOf(word, language.months, language.shortMonths) + 1;
}

int weekdayIn(const Language& language, std::string_view word) {
    return placeOf(word, language.weekdays, language.shortWeekdays);
}

int englishMonth(std::string_view word) {
    return isSameText(word, "sept") ? 9 : monthIn(english(), word);
}

int englishWeekday(std::string_view word) {
    if (isSameText(word, "tues"))
        return 2;
    if (isSameText(word, "thur") || isSameText(word, "thurs"))
        return 4;
    return weekdayIn(english(), word);
}

} // namespace

/// English alone: relative dates are written by programs and in scripts.
/// English alone, as the words that go with units are ("ago", "next").
const Unit* findUnit(std::string_view word) {
    for (const Unit& unit : units)
        if (isSameText(word, unit.name) ||
            (word.size() == unit.name.size() + 1 && lowerCase(word.back()) == 's' &&
             isSameText(word.substr(0, unit.name.size()), unit.name)))
            return &unit;
    return nullptr;
}

std::optional<int> findZone(std::string_view word) {
    for (const ZoneName& zone : zones)
        if (isSameText(word, zone.name))
            return zone.offset;
    return std::nullopt;
}

int findMonth(std::string_view word) {
    const int month = englishMonth(word);
    // No language here has an English weekday's name for a month.
    return month != 0 || englishWeekday(word) >= 0 ? month : monthIn(languageInForce(), word);
}

int findWeekday(std::string_view word) {
    const int weekday = englishWeekday(word);
    return weekday >= 0 ? weekday : weekdayIn(languageInForce(), word);
}

} // namespace kaz::dates
