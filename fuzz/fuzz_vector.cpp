// SPDX-License-Identifier: Apache-2.0
// The fast forms of the loops over bytes beside the portable ones: both are
// compiled into this program and have to agree on every text.

#include "fuzz/harness.h"
#include "tools/platform/processor/vector.h"

#include <string>
#include <vector>

namespace {

using kaz::host::ByteOperations;
using kaz::host::ByteSet;
using kaz::host::portableBytes;

/// Texts in blocks of exactly their size, so that a sanitizer sees each byte
/// that is touched outside them.
using Bytes = std::vector<char>;

Bytes bytesOf(const std::string& s) {
    return Bytes(s.begin(), s.end());
}

Bytes escaped(const ByteOperations& forms, const Bytes& s, const ByteSet& set, char escape) {
    Bytes out(s.size() + portableBytes.countIn(s.data(), s.size(), set));
    forms.putEscaped(out.data(), s.data(), s.size(), set, escape);
    return out;
}

std::vector<std::int32_t> pairs(const ByteOperations& forms, const Bytes& s, char first, char last,
                                std::size_t distance) {
    const std::size_t end = s.size() > distance ? s.size() - distance : 0;
    std::vector<std::int32_t> all;
    for (std::size_t from = 0; from < end;) {
        std::int32_t some[40];
        const std::size_t count =
            forms.findPairs(s.data(), from, end, first, last, distance, some, 40);
        all.insert(all.end(), some, some + count);
    }
    return all;
}

/// Gives the length of the text that was tried.
std::size_t compareForms(const ByteOperations& wide, fuzz::Input& input) {
    // A text of few different bytes, in which sets and pairs have many hits, or
    // of any; repeated, so that a short input makes many steps.
    const std::string unit =
        input.flag() ? input.text(200) : input.textOf("ab\\\"AB\xE1\x00 \n", 200);
    std::string text;
    for (int n = input.between(0, 60); n >= 0; --n)
        text += unit;
    const std::string members = input.text(10);
    ByteSet set;
    for (const char c : members)
        set.insert(c);
    const Bytes s = bytesOf(text);
    const std::size_t n = s.size();

    const std::size_t first = portableBytes.findIn(s.data(), n, set);
    FUZZ_CHECK(wide.findIn(s.data(), n, set) == first);
    FUZZ_CHECK(first == n || members.find(s[first]) != std::string::npos);
    FUZZ_CHECK(wide.findNotIn(s.data(), n, set) == portableBytes.findNotIn(s.data(), n, set));
    FUZZ_CHECK(wide.lengthWithout(s.data(), n, set) ==
               portableBytes.lengthWithout(s.data(), n, set));
    FUZZ_CHECK(wide.countIn(s.data(), n, set) == portableBytes.countIn(s.data(), n, set));
    FUZZ_CHECK(wide.hash(s.data(), n) == portableBytes.hash(s.data(), n));
    const char c = static_cast<char>(input.byte());
    const char d = static_cast<char>(input.byte());
    const std::size_t last = std::string(s.begin(), s.end()).rfind(c) + 1;
    FUZZ_CHECK(wide.lengthThrough(s.data(), n, c) == last);
    FUZZ_CHECK(portableBytes.lengthThrough(s.data(), n, c) == last);
    FUZZ_CHECK(wide.count(s.data(), n, c) == portableBytes.count(s.data(), n, c));
    FUZZ_CHECK(escaped(wide, s, set, c) == escaped(portableBytes, s, set, c));

    const std::string quotes = input.textOf("\"ab \xE1", 3);
    ByteSet stops = set;
    for (const char quote : quotes + c)
        stops.insert(quote);
    const std::size_t end = portableBytes.findUnquoted(s.data(), n, stops, quotes.c_str(), c);
    FUZZ_CHECK(wide.findUnquoted(s.data(), n, stops, quotes.c_str(), c) == end);
    FUZZ_CHECK(end == n || (s[end] != c && members.find(s[end]) != std::string::npos));

    const std::size_t distance = input.between<std::size_t>(0, 70);
    const auto found = pairs(portableBytes, s, c, d, distance);
    FUZZ_CHECK(pairs(wide, s, c, d, distance) == found);
    if (n > distance) {
        const std::size_t end = n - distance;
        const std::size_t expected = found.empty() ? end : static_cast<std::size_t>(found[0]);
        FUZZ_CHECK(wide.findPair(s.data(), 0, end, c, d, distance) == expected);
        FUZZ_CHECK(portableBytes.findPair(s.data(), 0, end, c, d, distance) == expected);
    }

    Bytes other = s;
    for (int changes = input.between(0, 3); changes > 0 && n > 0; --changes) {
        char& changed = other[input.between<std::size_t>(0, n - 1)];
        // Into the other case, the other separator, or anything.
        const int flips[] = {0x20, '/' ^ '\\', input.byte()};
        changed = static_cast<char>(changed ^ flips[input.between(0, 2)]);
    }
    FUZZ_CHECK(wide.endOfSameNoCase(s.data(), other.data(), n) ==
               portableBytes.endOfSameNoCase(s.data(), other.data(), n));
    const std::size_t same = portableBytes.endOfSameName(s.data(), other.data(), n);
    FUZZ_CHECK(wide.endOfSameName(s.data(), other.data(), n) == same);
    // Texts of all lengths below two steps, where the forms split.
    for (std::size_t k = 0; k <= n && k < 64; ++k)
        FUZZ_CHECK(wide.endOfSameName(s.data() + n - k, other.data() + n - k, k) ==
                   portableBytes.endOfSameName(s.data() + n - k, other.data() + n - k, k));
    return n;
}

} // namespace

void fuzz::harness(Input& input) {
    const ByteOperations& wide = kaz::host::bytes();
    // A text is up to 60 times what it takes of the input: work ends before that does.
    for (std::size_t work = 0; !input.empty() && work < 2000000;)
        work += compareForms(wide, input) + 1;
}
