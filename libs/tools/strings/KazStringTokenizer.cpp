#include "tools/strings/KazStringTokenizer.h"

#include "tools/strings/detail/tokens.h"

#include <cstdlib>

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
    char* const copy = ownSet(o.delimiters).release();
    std::free(delimiters);
    delimiters = copy;
    text = o.text;
    position = o.position;
    return *this;
}

KazStringTokenizer::~KazStringTokenizer() {
    std::free(delimiters);
}

KazString KazStringTokenizer::takeToken(int start, int found, bool skipRuns) {
    KazString token = tokenBetween(text, start, found);
    position = found > 0 && skipRuns ? lastOfRun(text, delimiters, found) : found;
    return token;
}

KazString KazStringTokenizer::nextString(bool skipRuns) {
    if (isDone())
        return KazString();
    const int start = tokenStart();
    return takeToken(start, text.findChar(delimiters, start), skipRuns);
}
