#include "tools/strings/KazWString.h"

#include "tools/app/exceptions/report.h"
#include "tools/strings/detail/Block.h"
#include "tools/strings/detail/CharSet.h"
#include "tools/strings/detail/Characters.h"
#include "tools/strings/detail/Hash.h"
#include "tools/strings/detail/Pattern.h"
#include "tools/strings/detail/Search.h"
#include "tools/strings/detail/shared_writes.h"
#include "tools/strings/detail/wide_text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <limits>
#include <ostream>

namespace {
using String = KazWString;
using Char = unsigned short;
constinit const unsigned short blanks[] = {' ', '\t', '\n', '\r', 0};
} // namespace

#include "tools/strings/detail/core_members.inc"
#include "tools/strings/detail/edit_members.inc"
#include "tools/strings/detail/search_members.inc"

constinit const unsigned short* const KazWString::theDefaultWhitespaces = blanks;

KazWString::KazWString(const unsigned short* s) : rep_(isNothing(s) ? nullptr : createRep(s)) {}

KazWString::KazWString(unsigned short c) : rep_(createRep(&c, 1, 1)) {}

KazWString::KazWString(const char* s) {
    if (s == nullptr)
        return;
    const std::size_t n = std::mbstowcs(nullptr, s, 0);
    if (n == 0 || n == static_cast<std::size_t>(-1))
        return;
    const kaz::detail::WideBuffer wide = kaz::detail::wideBuffer(n);
    std::mbstowcs(wide.get(), s, n + 1);
    const auto units = static_cast<std::int64_t>(kaz::detail::unitsOf(wide.get(), n));
    rep_ = Block::make(units, units);
    kaz::detail::putUnits(chars(), wide.get(), n);
}

KazWString::KazWString(const KazString& s) : KazWString(s.getValue()) {}

// ---- Comparison, which is inline in the narrow class

int KazWString::compare(const Char* s) const {
    return orderOf(getValue(), orEmpty(s), -1,
                   [](const Char* a, const Char* b) { return Characters::compare(a, b); });
}

int KazWString::compare(const KazWString& o) const {
    if (rep_ == o.rep_)
        return 0;
    return orderOf(getValue(), o.getValue(), 1,
                   [](const Char* a, const Char* b) { return Characters::compare(a, b); });
}

bool KazWString::equals(const Char* s) const {
    if (isEmpty() || isNothing(s))
        return isEmpty() && isNothing(s);
    return Characters::compare(chars(), s) == 0;
}

bool KazWString::equals(const KazWString& o) const {
    if (getLength() != o.getLength())
        return false;
    return isEmpty() || rep_ == o.rep_ || Characters::compare(chars(), o.chars()) == 0;
}

// ---- Output

void KazWString::dump() const {
    if (rep_ == nullptr) {
        std::printf("NULL string\n");
        return;
    }
    kaz::detail::reportBlock(*getRep(), Text::of(chars()).length);
    std::printf("value = '%s', ref count = %d\n", toNarrow().getValue(), getRep()->referenceCount);
}

std::ostream& operator<<(std::ostream& out, const KazWString& s) {
    return out << s.toNarrow();
}
