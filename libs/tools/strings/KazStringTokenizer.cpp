// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/KazStringTokenizer.h"

#include "tools/strings/detail/tokens.h"

#include <utility>

using namespace kaz::detail;

// The text is trimmed before the set is copied, so that nothing can fail once
// the set is owned.
KazStringTokenizer::KazStringTokenizer(const KazString& text_, const char* delimiters_)
    : text(trimmed(text_, delimiters_)),
      delimiters(ownSet(delimiters_).release()),
      position(text.isEmpty() ? -1 : 0) {}

KazStringTokenizer::KazStringTokenizer(const KazStringTokenizer& o)
    : text(o.text), delimiters(ownSet(o.delimiters).release()), position(o.position) {}

KazStringTokenizer& KazStringTokenizer::operator=(const KazStringTokenizer& o) {
    // Only the copy of the set can fail, and it is made first; the text is shared. The old set is
    // freed at the end, also when a tokenizer is assigned to itself.
    const HeapPtr<char> old(std::exchange(delimiters, ownSet(o.delimiters).release()));
    text = o.text;
    position = o.position;
    return *this;
}

KazStringTokenizer::~KazStringTokenizer() {
    const HeapPtr<char> last(delimiters);
}

KazString KazStringTokenizer::takeToken(int start, int found, bool skipRuns) {
    return takeTokenOf(text, delimiters, position, start, found, skipRuns);
}

KazString KazStringTokenizer::nextString(bool skipRuns) {
    if (isDone())
        return KazString();
    const int start = tokenStart();
    return takeTokenOf(text, delimiters, position, start, findDelimiter(text, start, delimiters),
                       skipRuns);
}
