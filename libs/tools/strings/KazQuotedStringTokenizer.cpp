// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/KazQuotedStringTokenizer.h"

#include "tools/strings/detail/tokens.h"

#include <utility>

using namespace kaz::detail;

KazQuotedStringTokenizer::KazQuotedStringTokenizer(const KazString& text_, const char* delimiters_,
                                                   const char* quotes_, char escape_)
    : KazStringTokenizer(text_, delimiters_), quotes(ownSet(quotes_).release()), escape(escape_) {}

KazQuotedStringTokenizer::KazQuotedStringTokenizer(const KazQuotedStringTokenizer& o)
    : KazStringTokenizer(o), quotes(ownSet(o.quotes).release()), escape(o.escape) {}

KazQuotedStringTokenizer& KazQuotedStringTokenizer::operator=(const KazQuotedStringTokenizer& o) {
    // Both sets are copied before the first member changes; what was replaced leaves with `copy`.
    HeapPtr<char> copy = ownSet(o.quotes);
    KazStringTokenizer::operator=(o);
    copy.reset(std::exchange(quotes, copy.release()));
    escape = o.escape;
    return *this;
}

KazQuotedStringTokenizer::~KazQuotedStringTokenizer() {
    const HeapPtr<char> last(quotes);
}

KazString KazQuotedStringTokenizer::nextString(bool skipRuns) {
    if (isDone())
        return KazString();
    const int start = tokenStart();
    return takeTokenOf(text, delimiters, position, start,
                       findUnquoted(text, start, delimiters, quotes, escape), skipRuns);
}
