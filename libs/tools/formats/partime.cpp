// SPDX-License-Identifier: Apache-2.0
// Reading in three steps: the text in pieces, the items that they make, and what these
// mean together.
#include "tools/formats/datetime.h"
#include "tools/formats/detail/date_items.h"
#include "tools/formats/detail/date_meaning.h"
#include "tools/formats/detail/date_scanner.h"
#include "tools/formats/detail/zones.h"

#include <cstring>

namespace {

using namespace kaz::dates;

/// @p result is new; on failure it has nothing but `errorAt`.
int read(const char* text, const partime_options& options, partime_result& result) {
    // No further than the limit: a text may be a whole file by mistake.
    const std::size_t length = text != nullptr ? strnlen(text, longestText + 1) : 0;
    const Zone zone(options.zone);
    if (length > longestText || !zone.exists())
        return partime_syntax;
    const Tokens tokens({text, length});
    if (tokens.isEmpty())
        return partime_empty;
    ItemReader reader(tokens, options.order);
    const int status = reader.read();
    if (status == partime_ok)
        return findMeaning(reader.statement(), zone, options.now, result);
    result.errorAt = reader.errorAt();
    return status;
}

} // namespace

int partime(const char* text, std::int64_t* seconds) {
    partime_result result;
    const int status = partime(text, nullptr, &result);
    if (status == partime_ok && seconds != nullptr)
        *seconds = result.seconds;
    return status;
}

int partime(const char* text, const partime_options* options, partime_result* result) {
    partime_result found;
    const int status = read(text, options != nullptr ? *options : partime_options(), found);
    if (result == nullptr)
        return status;
    // On failure the caller's result keeps what it had, but for the place of the mistake.
    if (status == partime_ok)
        *result = found;
    else
        result->errorAt = found.errorAt;
    return status;
}

const char* partime_error_text(int status) {
    switch (status) {
    case partime_ok:
        return "";
    case partime_empty:
        return "no date given";
    case partime_syntax:
        return "not understood as a date";
    case partime_range:
        return "no such date or time";
    case partime_ambiguous:
        return "day and month cannot be told apart";
    case partime_conflict:
        return "contradicts itself";
    default:
        return "unknown status";
    }
}
