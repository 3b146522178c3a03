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

/// Steps through what may end a token or hide its end, for text of any width.
template <class Ch>
class QuoteScan {
public:
    QuoteScan(const Ch* delimiters, const Ch* quotes, Ch escape)
        : delimiters_(delimiters), quotes_(quotes), escape_(escape) {}

    /// The index of the first delimiter that is neither quoted nor escaped, or -1.
    std::ptrdiff_t find(Text<Ch> text) const {
        bool escaped = false;
        Ch openQuote = 0;
        for (std::ptrdiff_t i = 0; i < text.length; ++i) {
            const Ch c = text.data[i];
            if (escaped)
                escaped = false;
            else if (c == escape_)
                escaped = true;
            else if (openQuote != 0)
                openQuote = c == openQuote ? Ch{0} : openQuote;
            else if (quotes_.contains(c))
                openQuote = c;
            else if (delimiters_.contains(c))
                return i;
        }
        return -1;
    }

private:
    CharSet<Ch> delimiters_;
    CharSet<Ch> quotes_;
    Ch escape_;
};

/// The same for bytes, from one that counts to the next.
template <>
class QuoteScan<char> {
public:
    QuoteScan(const char* delimiters, const char* quotes, char escape)
        : quotes_(quotes), stops_(quotes), escape_(escape) {
        for (; *delimiters != '\0'; ++delimiters)
            stops_.insert(*delimiters);
        stops_.insert(escape);
    }

    std::ptrdiff_t find(Text<char> text) const {
        std::ptrdiff_t i = 0;
        while ((i += stops_.findIn(restOf(text, i))) < text.length) {
            const char c = text.data[i];
            if (c == escape_)
                i = std::min(i + 2, text.length);
            else if (quotes_.contains(c))
                i = endOfQuote(text, i);
            else
                return i;
        }
        return -1;
    }

private:
    static Text<char> restOf(Text<char> text, std::ptrdiff_t i) {
        return {text.data + i, text.length - i};
    }

    /// Behind the quote that is opened at @p i.
    std::ptrdiff_t endOfQuote(Text<char> text, std::ptrdiff_t i) const {
        CharSet<char> stops("");
        stops.insert(text.data[i++]);
        stops.insert(escape_);
        while ((i += stops.findIn(restOf(text, i))) < text.length) {
            if (text.data[i] != escape_)
                return i + 1;
            i = std::min(i + 2, text.length);
        }
        return i;
    }

    CharSet<char> quotes_;
    CharSet<char> stops_;
    char escape_;
};

/// The first delimiter at or after @p start that is neither quoted nor escaped,
/// or -1.
template <class String, class Ch>
std::int32_t findUnquoted(const String& text, std::int32_t start, const Ch* delimiters,
                          const Ch* quotes, Ch escape) {
    const QuoteScan<Ch> scan(delimiters, quotes, escape);
    const std::ptrdiff_t i = scan.find({text.getValue() + start, text.getLength() - start});
    return i >= 0 ? start + static_cast<std::int32_t>(i) : -1;
}

} // namespace kaz::detail
