// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/KazWStringTokenizer.h"

#include "tools/strings/detail/tokens.h"

#include <utility>

using namespace kaz::detail;

// The text is trimmed before the set is copied, so that nothing can fail once
// the set is owned.
KazWStringTokenizer::KazWStringTokenizer(const KazWString& text_, const unsigned short* delimiters_)
    : text(trimmed(text_, delimiters_)),
      delimiters(ownSet(delimiters_).release()),
      position(text.isEmpty() ? -1 : 0) {}

KazWStringTokenizer::KazWStringTokenizer(const KazWStringTokenizer& o)
    : text(o.text), delimiters(ownSet(o.delimiters).release()), position(o.position) {}

KazWStringTokenizer& KazWStringTokenizer::operator=(const KazWStringTokenizer& o) {
    // Only the copy of the set can fail, and it is made first; the text is shared. The old set is
    // freed at the end, also when a tokenizer is assigned to itself.
    const HeapPtr<unsigned short> old(std::exchange(delimiters, ownSet(o.delimiters).release()));
    text = o.text;
    position = o.position;
    return *this;
}

KazWStringTokenizer::~KazWStringTokenizer() {
    const HeapPtr<unsigned short> last(delimiters);
}

KazWString KazWStringTokenizer::takeToken(int start, int found, bool skipRuns) {
    return takeTokenOf(text, delimiters, position, start, found, skipRuns);
}

KazWString KazWStringTokenizer::nextString(bool skipRuns) {
    if (isDone())
        return KazWString();
    const int start = tokenStart();
    return takeTokenOf(text, delimiters, position, start, findDelimiter(text, start, delimiters),
                       skipRuns);
}
