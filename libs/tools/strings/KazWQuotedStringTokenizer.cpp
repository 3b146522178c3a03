// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/KazWQuotedStringTokenizer.h"

#include "tools/strings/detail/tokens.h"

#include <utility>

using namespace kaz::detail;

KazWQuotedStringTokenizer::KazWQuotedStringTokenizer(const KazWString& text_,
                                                     const unsigned short* delimiters_,
                                                     const unsigned short* quotes_,
                                                     unsigned short escape_)
    : KazWStringTokenizer(text_, delimiters_), quotes(ownSet(quotes_).release()), escape(escape_) {}

KazWQuotedStringTokenizer::KazWQuotedStringTokenizer(const KazWQuotedStringTokenizer& o)
    : KazWStringTokenizer(o), quotes(ownSet(o.quotes).release()), escape(o.escape) {}

KazWQuotedStringTokenizer&
KazWQuotedStringTokenizer::operator=(const KazWQuotedStringTokenizer& o) {
    // Both sets are copied before the first member changes; what was replaced leaves with `copy`.
    HeapPtr<unsigned short> copy = ownSet(o.quotes);
    KazWStringTokenizer::operator=(o);
    copy.reset(std::exchange(quotes, copy.release()));
    escape = o.escape;
    return *this;
}

KazWQuotedStringTokenizer::~KazWQuotedStringTokenizer() {
    const HeapPtr<unsigned short> last(quotes);
}

KazWString KazWQuotedStringTokenizer::nextString(bool skipRuns) {
    if (isDone())
        return KazWString();
    const int start = tokenStart();
    return takeTokenOf(text, delimiters, position, start,
                       findUnquoted(text, start, delimiters, quotes, escape), skipRuns);
}
