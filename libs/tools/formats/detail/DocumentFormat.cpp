#include "tools/formats/detail/DocumentFormat.h"

#include "tools/formats/detail/spelling.h"

#include <chrono>
#include <numeric>

namespace kaz::detail {

std::int64_t TableShape::total() const {
    return std::accumulate(shares.begin(), shares.begin() + columns, std::int64_t{0});
}

std::int64_t TableShape::endOf(int column, std::int64_t width) const {
    const std::int64_t sum =
        std::accumulate(shares.begin(), shares.begin() + column + 1, std::int64_t{0});
    return rounded(sum * width, total());
}

DocumentFormat::Progress DocumentFormat::mark() const {
    Progress result = progress;
    result.sizes[0] = body.out.size();
    result.sizes[1] = tables.out.size();
    result.sizes[2] = pictures.out.size();
    return result;
}

void DocumentFormat::goBack(const Progress& mark) {
    progress = mark;
    body.out.truncate(mark.sizes[0]);
    tables.out.truncate(mark.sizes[1]);
    pictures.out.truncate(mark.sizes[2]);
}

void DocumentFormat::putText(const Text& text) {
    paragraphFormat(format).encode(out(), text.chars, text.encoding);
}

std::string utc(std::int64_t seconds, const std::array<const char*, 6>& words, bool padded) {
    using namespace std::chrono;
    const sys_seconds moment{std::chrono::seconds(seconds)};
    const sys_days day = floor<days>(moment);
    const year_month_day date = day;
    const hh_mm_ss<std::chrono::seconds> time(moment - day);
    const std::array<std::int64_t, 6> values = {static_cast<int>(date.year()),
                                                static_cast<unsigned>(date.month()),
                                                static_cast<unsigned>(date.day()),
                                                time.hours().count(),
                                                time.minutes().count(),
                                                time.seconds().count()};
    std::string result;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::string digits = std::to_string(values[i]);
        const std::size_t width = i == 0 ? 4 : 2;
        result += words[i];
        if (padded && digits.size() < width)
            result.append(width - digits.size(), '0');
        result += digits;
    }
    return result;
}

std::string isoUtc(std::int64_t seconds) {
    return utc(seconds, {"", "-", "-", "T", ":", ":"}, true);
}

std::string escapedUrl(std::string_view url, std::string_view others) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    for (const char c : url) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F && others.find(c) == std::string_view::npos)
            result += c;
        else
            (((result += '%') += digits[byte / 16])) += digits[byte % 16];
    }
    return result;
}

} // namespace kaz::detail
