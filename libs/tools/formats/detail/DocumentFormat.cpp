// SPDX-License-Identifier: Apache-2.0
// What the writers of all formats share. A document is in three parts that grow independently; a
// mark holds their lengths, and going back to one forgets what has been written since. The edges
// of columns are computed from the sum of the shares up to them, so that rounding never adds up.
#include "tools/formats/detail/DocumentFormat.h"

#include "tools/formats/datetime.h"
#include "tools/formats/detail/spelling.h"

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

/// Cannot fail: it is called while an exception is on its way.
void DocumentFormat::goBack(const Progress& mark) {
    progress = mark;
    body.out.truncate(mark.sizes[0]);
    tables.out.truncate(mark.sizes[1]);
    pictures.out.truncate(mark.sizes[2]);
}

void DocumentFormat::putText(const Text& text) {
    paragraphFormat(format).encode(out(), text.chars, text.encoding);
}

std::string utc(std::int64_t seconds, const char* conversions) {
    return FmtDate(seconds, conversions, "UTC").getValue();
}

/// "%" itself is kept unless it is among @p others: what was escaped before stays as it is.
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
