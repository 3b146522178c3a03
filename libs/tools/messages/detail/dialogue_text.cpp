// SPDX-License-Identifier: Apache-2.0
// Texts are made without a look at the recording or at a director, and nothing here keeps
// anything: whoever records may be between any two steps of a tool.
#include "tools/messages/detail/dialogue_text.h"

#include "tools/formats/detail/json_text.h"
#include "tools/platform/host.h"
#include "tools/util/gu_set.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace kaz::detail::dialogue {

std::string_view viewOf(const KazString& text) {
    return {text.getValue(), static_cast<std::size_t>(text.getLength())};
}

/// In UTC: the lines of a log stay in order when the clocks change.
std::string timeText() {
    namespace chrono = std::chrono;
    int nanosecond = 0;
    const chrono::sys_seconds now{chrono::seconds(host::now(nanosecond))};
    const auto day = chrono::floor<chrono::days>(now);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss time(now - day);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()), nanosecond / 1000000);
    return text;
}

std::string textOf(const char* format, va_list args) {
    if (format == nullptr)
        return {};
    // The director still has to read the arguments.
    va_list again;
    va_copy(again, args);
    KazString formatted;
    formatted.formatV(format, again);
    va_end(again);
    std::string text(viewOf(formatted));
    // The newline of a format is the caller's wish for a line of its own; one of an argument is
    // text.
    if (std::string_view(format).ends_with('\n') && text.ends_with('\n'))
        text.pop_back();
    return text;
}

std::string listOf(const gu_set* symbols) {
    std::string list = "[";
    for (auto i = gu_set_init(symbols); !gu_set_done(i); gu_set_next(&i))
        list.append(list.size() > 1 ? "," : "")
            .append(std::to_string(reinterpret_cast<std::intptr_t>(gu_set_element(i))));
    return list + "]";
}

std::string listOf(int count, const char* const* texts) {
    std::string list = "[";
    for (int i = 0; i < count; ++i) {
        list += i > 0 ? "," : "";
        appendJson(list, texts[i] != nullptr ? texts[i] : "");
    }
    return list + "]";
}

std::string_view toolName(int argc, const char* const* argv) {
    std::string_view name = argc > 0 && argv[0] != nullptr ? argv[0] : "";
    name.remove_prefix(name.find_last_of("/\\") + 1); // npos + 1 is the beginning
    // A tool has one name in the recordings of both hosts.
    if (name.ends_with(".exe") || name.ends_with(".EXE"))
        name.remove_suffix(4);
    return name;
}

} // namespace kaz::detail::dialogue
