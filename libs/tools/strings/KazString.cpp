// SPDX-License-Identifier: Apache-2.0
// The narrow string. What both widths do alike stands in the .inc files, which each of the two
// sources compiles with its own String and Char; what follows them differs: conversion, formatting
// and output. A string without characters has no block, so a null pointer is the empty text.
#include "tools/strings/KazString.h"

#include "tools/app/exceptions/KazMemoryException.h"
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
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <ostream>

namespace {
using String = KazString;
using Char = char;
} // namespace

#include "tools/strings/detail/core_members.inc"
#include "tools/strings/detail/edit_members.inc"
#include "tools/strings/detail/search_members.inc"

constinit const char* const KazString::theDefaultWhitespaces = " \t\n\r";

KazString::KazString(const char* s) : rep_(isNothing(s) ? nullptr : createRep(s)) {}

KazString::KazString(char c) : rep_(createRep(&c, 1, 1)) {}

/// What the locale cannot express makes the whole string empty: half of a text would look like one.
KazString::KazString(const unsigned short* ws) {
    if (ws == nullptr)
        return;
    const kaz::detail::WideBuffer wide = kaz::detail::widened(ws);
    if (wide == nullptr)
        return;
    const std::size_t n = std::wcstombs(nullptr, wide.get(), 0);
    if (n == 0 || n == static_cast<std::size_t>(-1))
        return;
    // The length is set when the characters are there: until then the block is an empty string.
    rep_ = Block::make(0, static_cast<std::int64_t>(n));
    // Measuring may overlook what writing finds impossible.
    const std::size_t written = std::wcstombs(chars(), wide.get(), n + 1);
    if (written == static_cast<std::size_t>(-1))
        *this = KazString();
    else
        setStringLength(static_cast<int>(written));
}

// ---- Appending

void KazString::appendNumber(int n) {
    char digits[std::numeric_limits<int>::digits10 + 2];
    appendText(digits, std::to_chars(std::begin(digits), std::end(digits), n).ptr - digits);
}

// ---- Formatting

namespace {

/// A second pass over a variable argument list.
struct ArgumentsAgain {
    explicit ArgumentsAgain(va_list first) { va_copy(args, first); }
    ~ArgumentsAgain() { va_end(args); }
    ArgumentsAgain(const ArgumentsAgain&) = delete;
    ArgumentsAgain& operator=(const ArgumentsAgain&) = delete;

    va_list args;
};

} // namespace

void KazString::appendFormatV(const char* fmt, va_list args) {
    // Most results fit the small buffer and are formatted once only.
    char small[512];
    // Before the first pass, which leaves its list in an unknown state.
    ArgumentsAgain again(args);
    errno = 0;
    const int n = std::vsnprintf(small, sizeof small, orEmpty(fmt), args);
    if (n < 0) {
        // A text beyond INT_MAX is refused like one without memory; anything else is a character
        // that the locale cannot convert, and adds nothing.
        if (errno == EOVERFLOW || errno == ENOMEM)
            throw KazMemoryException();
        return;
    }
    if (static_cast<std::size_t>(n) < sizeof small)
        return append(small);
    // Apart from this string, whose characters may be among the arguments.
    KazString large;
    std::vsnprintf(large.getBuffer(n), static_cast<std::size_t>(n) + 1, fmt, again.args);
    large.releaseBuffer();
    append(large);
}

void KazString::appendFormat(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    ArgumentsAgain copy(args); // ends its list when appending throws, too
    va_end(args);
    appendFormatV(fmt, copy.args);
}

/// Into a string of its own: the arguments may be this one's characters, and a failure leaves it.
void KazString::formatV(const char* fmt, va_list args) {
    KazString result;
    result.appendFormatV(fmt, args);
    *this = std::move(result);
}

void KazString::format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    ArgumentsAgain copy(args);
    va_end(args);
    formatV(fmt, copy.args);
}

// ---- What narrow strings do not offer

namespace {

/// Returns after the report, as a director may let the program go on.
template <class Result>
Result unsupported(Result result) {
    kazInternalError(1);
    return result;
}

} // namespace

bool KazString::equalsLocale(const char*) const {
    return unsupported(false);
}

bool KazString::equalsLocale(const KazString&) const {
    return unsupported(false);
}

int KazString::compareLocale(const char*) const {
    return unsupported(-1);
}

int KazString::compareLocale(const KazString&) const {
    return unsupported(-1);
}

bool KazString::equalsLocale(const char*, const char*) {
    return unsupported(false);
}

bool KazString::equalsLocale(const KazString&, const KazString&) {
    return unsupported(false);
}

int KazString::compareLocale(const char*, const char*) {
    return unsupported(-1);
}

int KazString::compareLocale(const KazString&, const KazString&) {
    return unsupported(-1);
}

int KazString::findNot(const char*, int) const {
    return unsupported(-1);
}

int KazString::findNot(const KazString&, int) const {
    return unsupported(-1);
}

int KazString::findLastNot(const char*, int) const {
    return unsupported(-1);
}

int KazString::findLastNot(const KazString&, int) const {
    return unsupported(-1);
}

// ---- Output

void KazString::dump() const {
    if (rep_ == nullptr) {
        std::printf("NULL string\n");
        return;
    }
    kaz::detail::reportBlock(*getRep(), Text::of(chars()).length);
    std::printf("value = '%s', ref count = %d\n", chars(), getRep()->referenceCount);
}

std::ostream& operator<<(std::ostream& out, const KazString& s) {
    return out << s.getValue();
}
