/// @file
/// The steps that the narrow and the wide tokenizers share.
#pragma once

#include "tools/strings/detail/CharSet.h"
#include "tools/strings/detail/Characters.h"
#include "tools/util/detail/heap_ptr.h"

#include <cstdint>

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

/// The token from @p start to the delimiter at @p found (-1: to the end of the
/// text), without one carriage return at its end: lines of foreign files bring
/// these along.
template <class String>
String tokenBetween(const String& text, std::int32_t start, std::int32_t found) {
    String token = found > 0 ? text.subString(start, found - start) : text.subStringFrom(start);
    const int length = token.getLength();
    if (length > 0 && token.getValue()[length - 1] == '\r')
        token.setLength(length - 1);
    return token;
}

/// The first delimiter at or after @p start that is neither quoted nor escaped,
/// or -1.
template <class String, class Ch>
std::int32_t findUnquoted(const String& text, std::int32_t start, const Ch* delimiters,
                          const Ch* quotes, Ch escape) {
    const CharSet<Ch> ends(delimiters);
    const CharSet<Ch> quoteMarks(quotes);
    const Ch* const characters = text.getValue();
    bool escaped = false;
    Ch openQuote = 0;
    for (std::int32_t i = start; i < text.getLength(); ++i) {
        const Ch c = characters[i];
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

} // namespace kaz::detail
