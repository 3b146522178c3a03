// SPDX-License-Identifier: Apache-2.0
/// @file
/// The languages of dates.
#pragma once

#include <array>
#include <string_view>

namespace kaz::dates {

/// How one language writes dates; all texts are UTF-8 and end in NUL.
struct Language {
    std::string_view code;
    std::array<std::string_view, 12> months;
    std::array<std::string_view, 12> shortMonths;
    std::array<std::string_view, 7> weekdays; ///< from Sunday
    std::array<std::string_view, 7> shortWeekdays;
    const char* date;     ///< %x
    const char* dateTime; ///< %c
    const char* longDate; ///< "@long"
};

const Language& english();

/// Null when there is none of this code.
const Language* findLanguage(std::string_view code);

/// The one that was set, else the configured one; asks ToolInfo in that case.
const Language& languageInForce();

} // namespace kaz::dates
