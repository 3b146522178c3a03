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
    const Bytes s(text.begin(), text.end());
    const std::size_t n = s.size();

    // What both forms say.
    const auto same = [&wide](auto ask) {
        const auto answer = ask(portableBytes);
        FUZZ_CHECK(ask(wide) == answer);
        return answer;
    };
    using Forms = const ByteOperations&;
    const std::size_t first = same([&](Forms f) { return f.findIn(s.data(), n, set); });
    FUZZ_CHECK(first == n || members.find(s[first]) != std::string::npos);
    same([&](Forms f) { return f.findNotIn(s.data(), n, set); });
    same([&](Forms f) { return f.lengthWithout(s.data(), n, set); });
    same([&](Forms f) { return f.countIn(s.data(), n, set); });
    same([&](Forms f) { return f.hash(s.data(), n); });
    const char c = static_cast<char>(input.byte());
    const char d = static_cast<char>(input.byte());
    const std::size_t last = text.rfind(c) + 1;
    FUZZ_CHECK(same([&](Forms f) { return f.lengthThrough(s.data(), n, c); }) == last);
    same([&](Forms f) { return f.count(s.data(), n, c); });
    same([&](Forms f) { return escaped(f, s, set, c); });

    const std::string quotes = input.textOf("\"ab \xE1", 3);
    ByteSet stops = set;
    for (const char quote : quotes + c)
        stops.insert(quote);
    const std::size_t end =
        same([&](Forms f) { return f.findUnquoted(s.data(), n, stops, quotes.c_str(), c); });
    FUZZ_CHECK(end == n || (s[end] != c && members.find(s[end]) != std::string::npos));

    const std::size_t distance = input.between<std::size_t>(0, 70);
    const auto found = same([&](Forms f) { return pairs(f, s, c, d, distance); });
    if (n > distance) {
        const std::size_t end = n - distance;
        const std::size_t expected = found.empty() ? end : static_cast<std::size_t>(found[0]);
        FUZZ_CHECK(same([&](Forms f) { return f.findPair(s.data(), 0, end, c, d, distance); }) ==
                   expected);
    }

    Bytes other = s;
    for (int changes = input.between(0, 3); changes > 0 && n > 0; --changes) {
        char& changed = other[input.between<std::size_t>(0, n - 1)];
        // Into the other case, the other separator, or anything.
        const int flips[] = {0x20, '/' ^ '\\', input.byte()};
        changed = static_cast<char>(changed ^ flips[input.between(0, 2)]);
    }
    same([&](Forms f) { return f.endOfSameNoCase(s.data(), other.data(), n); });
    same([&](Forms f) { return f.endOfSameName(s.data(), other.data(), n); });
    // Texts of all lengths below two steps, where the forms split.
    for (std::size_t k = 0; k <= n && k < 64; ++k)
        same([&](Forms f) { return f.endOfSameName(s.data() + n - k, other.data() + n - k, k); });
    return n;
}

} // namespace

void fuzz::harness(Input& input) {
    const ByteOperations& wide = kaz::host::bytes();
    // A text is up to 60 times what it takes of the input: work ends before that does.
    for (std::size_t work = 0; !input.empty() && work < 2000000;)
        work += compareForms(wide, input) + 1;
}
