// SPDX-License-Identifier: Apache-2.0
// Dates as text and back, for moments of two years in random order, as the files of a
// report have them.
#include "tools/formats/datetime.h"

#include <benchmark/benchmark.h>

#ifdef MOX_PEER_ABSEIL
#include <absl/time/time.h>
#endif
#ifdef MOX_PEER_FMT
#include <fmt/chrono.h>
#endif
#ifdef MOX_PEER_GLIB
#include <glib.h>
#endif
#ifdef MOX_PEER_QT
#include <QDateTime>
#include <QTimeZone>
#endif

#include <array>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <random>
#include <string>

namespace {

constexpr const char* format = "%Y-%m-%d %H:%M:%S";
constexpr std::size_t count = 256;

std::array<std::int64_t, count> moments() {
    std::array<std::int64_t, count> result;
    std::mt19937 random(1);
    for (std::int64_t& moment : result)
        moment = 1735689600 + static_cast<std::int64_t>(random() % (2 * 365 * 86400));
    return result;
}

std::array<std::string, count> texts(const char* textFormat) {
    std::array<std::string, count> result;
    const auto all = moments();
    for (std::size_t i = 0; i < count; ++i)
        result[i] = FmtDate(all[i], textFormat, "+02:00").getValue();
    return result;
}

template <class Write>
void addWriter(const std::string& work, const std::string& impl, Write write) {
    benchmark::RegisterBenchmark((work + "/" + impl).c_str(), [write](benchmark::State& state) {
        const auto all = moments();
        std::size_t next = 0;
        for (auto _ : state)
            benchmark::DoNotOptimize(write(all[next++ % count]));
    });
}

template <class Read>
void addReader(const std::string& work, const std::string& impl, const char* textFormat,
               Read read) {
    benchmark::RegisterBenchmark((work + "/" + impl).c_str(),
                                 [textFormat, read](benchmark::State& state) {
                                     const auto all = texts(textFormat);
                                     std::size_t next = 0;
                                     for (auto _ : state)
                                         benchmark::DoNotOptimize(read(all[next++ % count]));
                                 });
}

std::string byStrftime(const std::tm& time) {
    char buffer[64];
    return {buffer, std::strftime(buffer, sizeof buffer, format, &time)};
}

void addWriters() {
    const std::string utc = "date as text, UTC";
    const std::string local = "date as text, local";
    addWriter(utc, "moxtools", [](std::int64_t t) { return FmtDate(t, format, "UTC"); });
    addWriter(local, "moxtools", [](std::int64_t t) { return FmtDate(t, format); });
    addWriter(utc, "strftime", [](std::int64_t t) {
        std::tm time{};
        return byStrftime(*gmtime_r(&t, &time));
    });
    addWriter(local, "strftime", [](std::int64_t t) {
        std::tm time{};
        return byStrftime(*localtime_r(&t, &time));
    });
#ifdef MOX_PEER_FMT
    addWriter(utc, "fmt",
              [](std::int64_t t) { return fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::gmtime(t)); });
    addWriter(local, "fmt", [](std::int64_t t) {
        return fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::localtime(t));
    });
#endif
#ifdef MOX_PEER_ABSEIL
    addWriter(utc, "absl", [](std::int64_t t) {
        return absl::FormatTime(format, absl::FromUnixSeconds(t), absl::UTCTimeZone());
    });
    addWriter(local, "absl", [zone = absl::LocalTimeZone()](std::int64_t t) {
        return absl::FormatTime(format, absl::FromUnixSeconds(t), zone);
    });
#endif
#ifdef MOX_PEER_GLIB
    const auto byGlib = [](GDateTime* moment) {
        char* const text = g_date_time_format(moment, format);
        g_date_time_unref(moment);
        const char first = *text;
        g_free(text);
        return first;
    };
    addWriter(utc, "glib",
              [=](std::int64_t t) { return byGlib(g_date_time_new_from_unix_utc(t)); });
    addWriter(local, "glib",
              [=](std::int64_t t) { return byGlib(g_date_time_new_from_unix_local(t)); });
#endif
#ifdef MOX_PEER_QT
    const QString pattern = "yyyy-MM-dd HH:mm:ss";
    addWriter(utc, "qt", [=](std::int64_t t) {
        return QDateTime::fromSecsSinceEpoch(t, Qt::UTC).toString(pattern);
    });
    addWriter(local, "qt",
              [=](std::int64_t t) { return QDateTime::fromSecsSinceEpoch(t).toString(pattern); });
#endif
}

std::int64_t ours(const std::string& text) {
    std::int64_t seconds = 0;
    if (partime(text.c_str(), &seconds) != partime_ok)
        std::abort();
    return seconds;
}

void addReaders() {
    const std::string iso = "read an ISO date with its offset";
    const std::string mail = "read a mail date";
    addReader(iso, "moxtools", "@iso", ours);
    addReader(mail, "moxtools", "@mail", ours);
    addReader(iso, "strptime", "@iso", [](const std::string& text) {
        std::tm time{};
        const char* const rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S%z", &time);
        const long offset = time.tm_gmtoff; // which timegm clears
        return rest != nullptr ? timegm(&time) - offset : 0;
    });
#ifdef MOX_PEER_ABSEIL
    addReader(iso, "absl", "@iso", [](const std::string& text) {
        absl::Time time;
        std::string error;
        return absl::ParseTime(absl::RFC3339_sec, text, &time, &error) ? absl::ToUnixSeconds(time)
                                                                       : 0;
    });
#endif
#ifdef MOX_PEER_GLIB
    addReader(iso, "glib", "@iso", [](const std::string& text) {
        GDateTime* const moment = g_date_time_new_from_iso8601(text.c_str(), nullptr);
        const std::int64_t seconds = g_date_time_to_unix(moment);
        g_date_time_unref(moment);
        return seconds;
    });
#endif
#ifdef MOX_PEER_QT
    const auto byQt = [](Qt::DateFormat kind) {
        return [kind](const std::string& text) {
            return QDateTime::fromString(QString::fromLatin1(text.c_str()), kind)
                .toSecsSinceEpoch();
        };
    };
    addReader(iso, "qt", "@iso", byQt(Qt::ISODate));
    addReader(mail, "qt", "@mail", byQt(Qt::RFC2822Date));
#endif
}

} // namespace

int main(int argc, char** argv) {
    setenv("TZ", "Europe/Berlin", 1); // one that changes its clocks
    tzset();
    addWriters();
    addReaders();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
