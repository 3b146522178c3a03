// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/detail/wide_text.h"

#include "tools/strings/detail/Characters.h"
#include "tools/util/detail/allocate.h"

#include <cstdint>

namespace kaz::detail {

namespace {

/// Where wide characters are 16-bit units themselves, pairs stay pairs.
constexpr bool hasPairs = sizeof(wchar_t) > sizeof(unsigned short);

constexpr std::uint32_t firstPaired = 0x10000;
constexpr std::uint32_t highSurrogate = 0xD800;
constexpr std::uint32_t lowSurrogate = 0xDC00;
constexpr std::uint32_t endOfSurrogates = 0xE000;

bool isPaired(wchar_t c) {
    return hasPairs && static_cast<std::uint32_t>(c) >= firstPaired;
}

bool isIn(std::uint32_t unit, std::uint32_t first, std::uint32_t end) {
    return unit >= first && unit < end;
}

/// Reads one character from @p s, which moves behind it, and puts it to @p out,
/// which moves too; false for a lone surrogate.
bool readCharacter(const unsigned short*& s, wchar_t*& out) {
    const std::uint32_t unit = *s++;
    if (!isIn(unit, highSurrogate, endOfSurrogates)) {
        *out++ = static_cast<wchar_t>(unit);
        return true;
    }
    // The terminator is no low surrogate, so nothing behind it is read.
    if (unit >= lowSurrogate || !isIn(*s, lowSurrogate, endOfSurrogates))
        return false;
    const std::uint32_t low = *s++;
    if (hasPairs) {
        *out++ = static_cast<wchar_t>(firstPaired + ((unit - highSurrogate) << 10) +
                                      (low - lowSurrogate));
    } else {
        *out++ = static_cast<wchar_t>(unit);
        *out++ = static_cast<wchar_t>(low);
    }
    return true;
}

} // namespace

/// Units are as many as characters at least, so a buffer for them is never too small.
WideBuffer wideBuffer(std::size_t n) {
    return WideBuffer(static_cast<wchar_t*>(allocate((n + 1) * sizeof(wchar_t))));
}

WideBuffer widenedAsIs(const unsigned short* s) {
    WideBuffer result = wideBuffer(Characters<unsigned short>::length(s));
    wchar_t* out = result.get();
    while (*s != 0) {
        const unsigned short unit = *s;
        if (!readCharacter(s, out))
            *out++ = static_cast<wchar_t>(unit);
    }
    *out = L'\0';
    return result;
}

/// Null for a lone surrogate, which no locale can write.
WideBuffer widened(const unsigned short* s) {
    WideBuffer result = wideBuffer(Characters<unsigned short>::length(s));
    wchar_t* out = result.get();
    while (*s != 0)
        if (!readCharacter(s, out))
            return nullptr;
    *out = L'\0';
    return result;
}

std::size_t unitsOf(const wchar_t* s, std::size_t n) {
    std::size_t units = n;
    for (std::size_t i = 0; i < n; ++i)
        units += isPaired(s[i]) ? 1 : 0;
    return units;
}

void putUnits(unsigned short* out, const wchar_t* s, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const auto c = static_cast<std::uint32_t>(s[i]);
        if (isPaired(s[i])) {
            *out++ = static_cast<unsigned short>(highSurrogate + ((c - firstPaired) >> 10));
            *out++ = static_cast<unsigned short>(lowSurrogate + ((c - firstPaired) & 0x3FF));
        } else {
            *out++ = static_cast<unsigned short>(c);
        }
    }
}

} // namespace kaz::detail
