// SPDX-License-Identifier: Apache-2.0
// The formatting functions: which format, which language, which zone.
#include "tools/formats/datetime.h"
#include "tools/formats/detail/date_format.h"
#include "tools/formats/detail/moment.h"
#include "tools/formats/detail/zones.h"
#include "tools/util/detail/site_setting.h"

#include <cstring>
#include <string_view>

namespace {

using namespace kaz::dates;

/// Each conversion gives some hundred characters at most: no text comes near the limit of a string.
constexpr std::size_t longestFormat = 1024;

/// A format, and the language of its names (null: the one in force).
struct Format {
    const char* text;
    const Language* language = nullptr;
};

/// A format that the configuration may change.
struct Default {
    const char* name;
    const char* variable;
    const char* text;
};

constexpr Default dateDefault = {"@date", "date_format", "%Y-%m-%d"};
constexpr Default timeDefault = {"@time", "time_format", "%H:%M:%S"};

/// A format by its name; the text itself when it is none.
Format fixedFormat(const char* text) {
    if (std::strcmp(text, "@iso") == 0)
        return {"%Y-%m-%dT%H:%M:%S%:z"};
    if (std::strcmp(text, "@basic") == 0)
        return {"%Y%m%dT%H%M%S%z"};
    if (std::strcmp(text, "@mail") == 0)
        return {"%a, %d %b %Y %H:%M:%S %z", &english()};
    if (std::strcmp(text, "@long") == 0)
        return {languageInForce().longDate};
    return {text};
}

/// The configured format. One that names "@date" or "@time" in turn is as good as none.
Format configuredFormat(const Default& wanted) {
    const char* format = kaz::detail::siteSetting(wanted.variable);
    if (format == nullptr || std::strcmp(format, dateDefault.name) == 0 ||
        std::strcmp(format, timeDefault.name) == 0)
        return {wanted.text};
    return fixedFormat(format);
}

Format chooseFormat(const char* format, const Default& otherwise) {
    if (format == nullptr)
        return configuredFormat(otherwise);
    if (*format != '@')
        return {format};
    for (const Default& named : {dateDefault, timeDefault})
        if (std::strcmp(format, named.name) == 0)
            return configuredFormat(named);
    return fixedFormat(format);
}

KazString momentText(const Moment& moment, const Format& format) {
    if (strnlen(format.text, longestFormat + 1) > longestFormat)
        return {};
    TextSink sink;
    DateFormatter(moment, format.language).write(format.text, sink);
    return sink.take();
}

KazString momentText(std::int64_t seconds, const char* format, const char* zone,
                     const Default& otherwise) {
    const Zone place(zone);
    if (!isMoment(seconds) || !place.exists())
        return {};
    Moment moment;
    moment.seconds = seconds;
    moment.parts = partsOf(seconds, place.offsetAt(seconds, moment.zone));
    return momentText(moment, chooseFormat(format, otherwise));
}

/// The join checks the parts, and so guards the tables of names that are indexed by them.
KazString partsText(const date_parts& parts, const char* format, const Default& otherwise) {
    Moment moment;
    moment.parts = parts;
    if (!date_join(&parts, &moment.seconds))
        return {};
    return momentText(moment, chooseFormat(format, otherwise));
}

} // namespace

KazString FmtDate(std::int64_t seconds, const char* format, const char* zone) {
    return momentText(seconds, format, zone, dateDefault);
}

KazString FmtTime(std::int64_t seconds, const char* format, const char* zone) {
    return momentText(seconds, format, zone, timeDefault);
}

KazString FmtDate(const date_parts& parts, const char* format) {
    return partsText(parts, format, dateDefault);
}

KazString FmtTime(const date_parts& parts, const char* format) {
    return partsText(parts, format, timeDefault);
}
