// SPDX-License-Identifier: Apache-2.0
// The wide string, of 16-bit units on every host. What both widths do alike stands in the .inc
// files; what follows them differs: conversion from and to the locale's bytes, formatting by way
// of the narrow string, and comparison, which is inline in the narrow class.
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
#include <cstring>
#include <cwchar>
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
#include "tools/util/detail/compared.h"

constinit const unsigned short* const KazWString::theDefaultWhitespaces = blanks;

KazWString::KazWString(const unsigned short* s) : rep_(isNothing(s) ? nullptr : createRep(s)) {}

KazWString::KazWString(unsigned short c) : rep_(createRep(&c, 1, 1)) {}

KazWString::KazWString(const char* s) {
    setNarrow(s);
}

KazWString::KazWString(const KazString& s) : KazWString(s.getValue()) {}

void KazWString::copyUnits(const void* s, std::size_t n) {
    const auto length = static_cast<std::int64_t>(n);
    rep_ = Block::make(length, length);
    std::memcpy(rep_, s, n * sizeof(Char));
}

// ---- Between the widths

bool KazWString::setNarrow(const char* s) {
    // Measured first: a text that is not valid in the locale changes nothing.
    const std::size_t n = s != nullptr ? std::mbstowcs(nullptr, s, 0) : 0;
    if (n == static_cast<std::size_t>(-1))
        return false;
    if (n == 0) {
        removeReference();
        return true;
    }
    const kaz::detail::WideBuffer wide = kaz::detail::wideBuffer(n);
    std::mbstowcs(wide.get(), s, n + 1);
    // Characters beyond 16 bits take two units, so the count differs from that of wchar_t.
    const auto units = static_cast<std::int64_t>(kaz::detail::unitsOf(wide.get(), n));
    Char* const text = Block::make(units, units);
    kaz::detail::putUnits(text, wide.get(), n);
    // The old block goes only when the new one is complete: a failure leaves the string as it was.
    adopt(text);
    return true;
}

bool KazWString::toNarrow(KazString& narrow) const {
    // What is converted is never null: an empty text is all that gives one.
    const KazString converted = toNarrow();
    if (converted.disguise() == nullptr && *getValue() != 0)
        return false;
    narrow = converted;
    return true;
}

/// A byte that is no character of its own in the locale adds nothing.
KazWString KazWString::operator+(char c) const {
    KazWString result = *this;
    const std::wint_t wide = std::btowc(static_cast<unsigned char>(c));
    if (wide != WEOF)
        result.append(static_cast<unsigned short>(wide));
    return result;
}

// ---- Formatting

namespace {

/// What @p fmt makes of its arguments, in 16-bit form.
KAZ_PRINTF(1, 0) KazWString formatted(const char* fmt, va_list args) {
    KazString narrow;
    narrow.formatV(fmt, args);
    return KazWString(narrow);
}

/// The format in the form that the runtime takes. Nothing is written by one that
/// cannot be converted.
KazString narrowFormat(const Char* fmt) {
    return KazString(orEmpty(fmt));
}

/// Ends a list of arguments however the scope is left.
struct EndOfArguments {
    va_list& args;
    ~EndOfArguments() { va_end(args); }
};

} // namespace

void KazWString::append(const unsigned short* s) {
    if (!isNothing(s))
        appendText(s, Text::of(s).length);
}

void KazWString::appendNumber(int n) {
    char digits[std::numeric_limits<int>::digits10 + 2];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), n).ptr;
    unsigned short text[std::size(digits)];
    appendText(text, std::copy(digits, end, text) - text);
}

void KazWString::appendFormatV(const char* fmt, va_list args) {
    append(formatted(fmt, args));
}

void KazWString::appendFormatV(const unsigned short* fmt, va_list args) {
    append(formatted(narrowFormat(fmt).getValue(), args));
}

void KazWString::formatV(const char* fmt, va_list args) {
    *this = formatted(fmt, args);
}

void KazWString::formatV(const unsigned short* fmt, va_list args) {
    *this = formatted(narrowFormat(fmt).getValue(), args);
}

void KazWString::appendFormat(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const EndOfArguments end{args};
    appendFormatV(fmt, args);
}

void KazWString::appendFormat(const unsigned short* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const EndOfArguments end{args};
    appendFormatV(fmt, args);
}

void KazWString::format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const EndOfArguments end{args};
    formatV(fmt, args);
}

void KazWString::format(const unsigned short* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const EndOfArguments end{args};
    formatV(fmt, args);
}

// ---- Collation

/// wcscoll() gives any number; callers get its sign. Lone surrogates are compared as they are.
int KazWString::compareLocale(const unsigned short* a, const unsigned short* b) {
    const kaz::detail::WideBuffer left = kaz::detail::widenedAsIs(orEmpty(a));
    const kaz::detail::WideBuffer right = kaz::detail::widenedAsIs(orEmpty(b));
    const int order = std::wcscoll(left.get(), right.get());
    return kaz::detail::signOf(order);
}

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

/// Lengths and blocks first: most texts that differ do so there, and copies share a block.
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
