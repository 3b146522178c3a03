// SPDX-License-Identifier: Apache-2.0
/// @file
/// The steps that the narrow and the wide tokenizers share.
#pragma once

#include "tools/strings/detail/Block.h"
#include "tools/strings/detail/CharSet.h"
#include "tools/strings/detail/Characters.h"
#include "tools/strings/detail/Search.h"
#include "tools/util/detail/heap_ptr.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace kaz::detail {

/// A heap copy of a character set that may be null.
template <class Ch>
HeapPtr<Ch> ownSet(const Ch* set) {
    static constexpr Ch none[1] = {};
    return HeapPtr<Ch>(Characters<Ch>::duplicate(set != nullptr ? set : none));
}

/// @p text without delimiters at either end.
template <class String, class Ch>
String trimmed(String text, const Ch* delimiters) {
    if (delimiters != nullptr) {
        text.trimLeft(delimiters);
        text.trimRight(delimiters);
    }
    return text;
}

/// The last delimiter of the run that begins at @p found. The text is trimmed,
/// so no run reaches its end.
template <class String, class Ch>
std::int32_t lastOfRun(const String& text, const Ch* delimiters, std::int32_t found) {
    const CharSet<Ch> members(delimiters);
    const Ch* const characters = text.getValue();
    while (members.contains(characters[found + 1]))
        ++found;
    return found;
}

/// The string that takes over a block.
template <class String, class Ch>
String stringOf(Ch* block) {
    void* slot = block; // may be used as a string, as for all containers
    return std::move(reinterpret_cast<String&>(slot));
}

/// The token from @p start to the delimiter at @p found (-1: to the end of the
/// text), without one carriage return at its end: lines of foreign files bring
/// these along.
template <class String>
String tokenBetween(const String& text, std::int32_t start, std::int32_t found) {
    const auto* const first = text.getValue() + start;
    using Ch = std::remove_cvref_t<decltype(*first)>;
    const std::int32_t length = (found > 0 ? found : text.getLength()) - start;
    if (length <= 0)
        return String();
    if (first[length - 1] != '\r')
        return length == text.getLength() ? text
                                          : stringOf<String>(Block<Ch>::make({first, length}));
    if (length == 1)
        return String();
    return stringOf<String>(Block<Ch>::make({first, length - 1}, length));
}

/// The same with the position that follows from it: the delimiter, or the last one
/// of its run.
template <class String, class Ch>
String takeTokenOf(const String& text, const Ch* delimiters, std::int32_t& position,
                   std::int32_t start, std::int32_t found, bool skipRuns) {
    String token = tokenBetween(text, start, found);
    position = found > 0 && skipRuns ? lastOfRun(text, delimiters, found) : found;
    return token;
}

/// The first delimiter at or after @p start, or -1.
template <class String, class Ch>
std::int32_t findDelimiter(const String& text, std::int32_t start, const Ch* delimiters) {
    if (*delimiters == 0)
        return -1;
    const Text<Ch> rest = {text.getValue() + start, text.getLength() - start};
    const std::ptrdiff_t i = delimiters[1] == 0 ? findCharacter(rest, *delimiters, 0)
                                                : CharSet<Ch>(delimiters).findIn(rest);
    return i >= 0 && i < rest.length ? start + static_cast<std::int32_t>(i) : -1;
}

/// The index of the first delimiter that is neither quoted nor escaped, or -1.
template <class Ch>
std::ptrdiff_t indexOfUnquoted(Text<Ch> text, const Ch* delimiters, const Ch* quotes, Ch escape) {
    const CharSet<Ch> ends(delimiters);
    const CharSet<Ch> quoteMarks(quotes);
    bool escaped = false;
    Ch openQuote = 0;
    for (std::ptrdiff_t i = 0; i < text.length; ++i) {
        const Ch c = text.data[i];
        if (escaped)
            escaped = false;
        else if (c == escape)
            escaped = true;
        else if (openQuote != 0)
            openQuote = c == openQuote ? Ch{0} : openQuote;
        else if (quoteMarks.contains(c))
            openQuote = c;
        else if (ends.contains(c))
            return i;
    }
    return -1;
}

template <>
inline std::ptrdiff_t indexOfUnquoted(Text<char> text, const char* delimiters, const char* quotes,
                                      char escape) {
    host::ByteSet stops(delimiters);
    for (const char* quote = quotes; *quote != '\0'; ++quote)
        stops.insert(*quote);
    stops.insert(escape);
    const auto length = static_cast<std::size_t>(text.length);
    const std::size_t i = host::bytes().findUnquoted(text.data, length, stops, quotes, escape);
    return i < length ? static_cast<std::ptrdiff_t>(i) : -1;
}

/// The first delimiter at or after @p start that is neither quoted nor escaped,
/// or -1.
template <class String, class Ch>
std::int32_t findUnquoted(const String& text, std::int32_t start, const Ch* delimiters,
                          const Ch* quotes, Ch escape) {
    const Text<Ch> rest = {text.getValue() + start, text.getLength() - start};
    const std::ptrdiff_t i = indexOfUnquoted(rest, delimiters, quotes, escape);
    return i >= 0 ? start + static_cast<std::int32_t>(i) : -1;
}

} // namespace kaz::detail
