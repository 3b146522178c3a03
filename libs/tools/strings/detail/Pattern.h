// SPDX-License-Identifier: Apache-2.0
/// @file
/// The pattern search of the string classes.
#pragma once

#include "tools/strings/detail/Characters.h"

#include <algorithm>
#include <cstddef>

namespace kaz::detail {

/// A pattern is a row of segments with runs ('*') between them; each element of
/// a segment matches exactly one character. As a match need not reach to the
/// end of the text, taking each segment at its first possible place is always
/// right: whatever a later place would allow, the first one allows as well. So
/// nothing is ever tried twice, and the time is at most pattern times text.
template <class Ch>
class Pattern {
public:
    explicit Pattern(Text<Ch> pattern)
        : end_(pattern.end()), begin_(pattern.begin()), literalBrackets_(begin_) {
        while (literalBrackets_ != end_) {
            const bool opens = *literalBrackets_ == '[';
            const Ch* const close = opens ? closingBracket(literalBrackets_) : nullptr;
            if (close != nullptr)
                literalBrackets_ = close + 1;
            else if (opens)
                break;
            else
                literal(literalBrackets_);
        }
    }

    /// The index where the first match at or after @p start begins, or -1. A
    /// match begins at a character of the text, never at its end.
    std::ptrdiff_t find(Text<Ch> text, std::ptrdiff_t start) const {
        if (start >= text.length)
            return -1;
        const Ch* rest = begin_;
        const Match first = findSegment(rest, text, start);
        if (first.begin < 0)
            return -1;
        for (Match last = first; skipRun(rest);) {
            if (rest == end_)
                break;
            last = findSegment(rest, text, last.end);
            if (last.begin < 0)
                return -1;
        }
        return first.begin;
    }

private:
    struct Match {
        std::ptrdiff_t begin;
        std::ptrdiff_t end;
    };

    bool skipRun(const Ch*& p) const {
        const Ch* const before = p;
        while (p != end_ && *p == '*')
            ++p;
        return p != before;
    }

    /// Finds the segment at @p p, which moves to its end.
    Match findSegment(const Ch*& p, Text<Ch> text, std::ptrdiff_t start) const {
        for (std::ptrdiff_t i = start; i <= text.length; ++i) {
            const Ch* element = p;
            std::ptrdiff_t k = i;
            while (element != end_ && *element != '*' && k < text.length &&
                   matches(element, text.data[k]))
                ++k;
            if (element == end_ || *element == '*') {
                p = element;
                return {i, k};
            }
        }
        return {-1, -1};
    }

    /// Whether the element at @p p matches @p c; if so, @p p moves behind it.
    bool matches(const Ch*& p, Ch c) const {
        const Ch* next = p;
        bool hit;
        if (*next == '.') {
            ++next;
            hit = true;
        } else if (*next == '[' && next < literalBrackets_) {
            const Ch* const close = closingBracket(next);
            hit = setContains(next + 1, close, c);
            next = close + 1;
        } else {
            hit = literal(next) == c;
        }
        if (hit)
            p = next;
        return hit;
    }

    /// The character that stands at @p p, a backslash before it taken away. One
    /// at the end of the pattern stands for itself.
    Ch literal(const Ch*& p) const {
        if (*p == '\\' && p + 1 != end_)
            ++p;
        return *p++;
    }

    static bool negates(const Ch* p) { return *p == '^' || *p == '!'; }

    /// The bracket that closes the set opened at @p open, or null.
    const Ch* closingBracket(const Ch* open) const {
        const Ch* p = open + 1;
        if (p != end_ && negates(p))
            ++p;
        if (p != end_ && *p == ']')
            ++p;
        while (p != end_ && *p != ']')
            literal(p);
        return p != end_ ? p : nullptr;
    }

    /// Membership in the set between @p p and the bracket at @p close.
    bool setContains(const Ch* p, const Ch* close, Ch c) const {
        const bool negated = negates(p);
        if (negated)
            ++p;
        bool found = false;
        while (p < close) {
            const Ch low = literal(p);
            Ch high = low;
            if (*p == '-' && p + 1 < close) {
                ++p;
                high = literal(p);
            }
            found = found || inRange(low, c, high);
        }
        return found != negated;
    }

    static bool inRange(Ch low, Ch c, Ch high) {
        const unsigned code = Characters<Ch>::code(c);
        return Characters<Ch>::code(low) <= code && code <= Characters<Ch>::code(high);
    }

    const Ch* end_;
    const Ch* begin_;
    /// From the first '[' that nothing closes on: no later one is closed either.
    const Ch* literalBrackets_;
};

} // namespace kaz::detail
