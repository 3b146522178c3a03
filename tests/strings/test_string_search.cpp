// Searches against plain loops, on texts that are hard for searches.

#include "kit/random.h"
#include "string_kit.h"

#include <algorithm>
#include <functional>

namespace {

int index(std::size_t found) {
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

/// The last match of a left-to-right scan that ends at or before @p limit.
int lastMatch(const std::string& text, const std::string& wanted, int limit) {
    int last = -1;
    for (std::size_t i = 0; (i = text.find(wanted, i)) != std::string::npos; i += wanted.size())
        if (i + wanted.size() <= static_cast<std::size_t>(limit))
            last = static_cast<int>(i);
    return last;
}

/// Matches by trying everything: @p p against the text that starts at @p t.
bool matchesHere(const std::string& pattern, std::size_t p, const std::string& text,
                 std::size_t t) {
    if (p == pattern.size())
        return true;
    if (pattern[p] == '*') {
        for (std::size_t k = t; k <= text.size(); ++k)
            if (matchesHere(pattern, p + 1, text, k))
                return true;
        return false;
    }
    if (t == text.size())
        return false;
    const std::size_t close = pattern[p] == '[' ? pattern.find(']', p + 2) : std::string::npos;
    if (close != std::string::npos) {
        const bool negated = pattern[p + 1] == '^';
        const std::string set = pattern.substr(p + 1 + negated, close - p - 1 - negated);
        return (set.find(text[t]) != std::string::npos) != negated &&
               matchesHere(pattern, close + 1, text, t + 1);
    }
    const bool isLiteral = pattern[p] == '\\';
    if (isLiteral)
        ++p;
    return (pattern[p] == text[t] || (pattern[p] == '.' && !isLiteral)) &&
           matchesHere(pattern, p + 1, text, t + 1);
}

template <class String>
class StringSearch : public testing::Test {
protected:
    static TestText<String> text(const std::string& s) { return TestText<String>(s); }
    kit::Random rng{kit::seed()};
};
TYPED_TEST_SUITE(StringSearch, BothStrings);

TYPED_TEST(StringSearch, TextIsFoundWhereAPlainSearchFindsIt) {
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 4000; ++round) {
        // Periodic texts with a few faults, long enough for the search that
        // near misses bring in, drive each of its branches.
        const std::string unit = this->rng.text(3, "ax") + "x";
        const auto periodic = [&](int length, int rarity) {
            std::string result;
            while (static_cast<int>(result.size()) < length)
                result += this->rng.oneIn(rarity) ? this->rng.text(2, "axb") : unit;
            return result;
        };
        const std::string hay = periodic(this->rng.below(1500), this->rng.between(8, 30));
        const std::string wanted =
            periodic(this->rng.between(1, 80), this->rng.oneIn(2) ? 1000 : 15)
                .substr(this->rng.oneIn(2));
        if (wanted.empty())
            continue;
        const TypeParam s{this->text(hay)};
        const int length = s.getLength();
        const int start = this->rng.below(length + 1);
        const std::size_t from = static_cast<std::size_t>(start);
        ASSERT_EQ(s.find(this->text(wanted), start), index(hay.find(wanted, from)))
            << hay << " " << wanted;
        ASSERT_EQ(s.find(TypeParam(this->text(wanted))), index(hay.find(wanted)));
        ASSERT_EQ(s.findLast(this->text(wanted), start),
                  lastMatch(hay, wanted, start == 0 ? length : start))
            << hay << " " << wanted << " " << start;
    }
}

TYPED_TEST(StringSearch, CharactersAndSetsAreFoundFromBothSides) {
    SCOPED_TRACE(kit::seedText());
    for (int round = 0; round < 5000; ++round) {
        const std::string hay = this->rng.text(30, "abxyz"), set = this->rng.text(3, "abxyzq");
        const char c = "abxyzq"[this->rng.below(6)];
        const auto wide = wideChar<TypeParam>(c);
        const TypeParam s{this->text(hay)};
        const int length = s.getLength();
        for (int start = -1; start <= length + 1; ++start) {
            const bool valid = start >= 0 && start <= length && length > 0;
            const std::size_t from = static_cast<std::size_t>(start);
            const std::size_t last = start == 0 ? std::string::npos : from;
            const bool hasSet = valid && !set.empty();
            EXPECT_EQ(s.find(wide, start), valid ? index(hay.find(c, from)) : -1);
            EXPECT_EQ(s.findNot(wide, start), valid ? index(hay.find_first_not_of(c, from)) : -1);
            EXPECT_EQ(s.findLast(wide, start), valid ? index(hay.rfind(c, last)) : -1);
            EXPECT_EQ(s.findLastNot(wide, start),
                      valid ? index(hay.find_last_not_of(c, from)) : -1);
            EXPECT_EQ(s.findChar(this->text(set), start),
                      hasSet ? index(hay.find_first_of(set, from)) : -1);
            EXPECT_EQ(s.findLastChar(this->text(set), start),
                      hasSet ? index(hay.find_last_of(set, last)) : -1);
        }
        EXPECT_EQ(s.count(wide), std::count(hay.begin(), hay.end(), c));
        ASSERT_FALSE(this->HasFailure()) << hay << " " << set << " " << c;
    }
}

TYPED_TEST(StringSearch, PatternsMatchWhereTryingEverythingMatches) {
    SCOPED_TRACE(kit::seedText());
    const std::vector<std::string> elements = {"a", "x", "b", ".", "*", "[ax]", "[^ax]", "\\."};
    for (int round = 0; round < 20000; ++round) {
        std::string pattern;
        for (int n = this->rng.between(1, 6); n > 0; --n)
            pattern += elements[static_cast<std::size_t>(this->rng.below(8))];
        const std::string hay = this->rng.text(12, "axb.");
        const int start = this->rng.below(static_cast<int>(hay.size()) + 1);
        int expected = -1;
        for (std::size_t i = static_cast<std::size_t>(start); i < hay.size() && expected < 0; ++i)
            if (matchesHere(pattern, 0, hay, i))
                expected = static_cast<int>(i);
        ASSERT_EQ(TypeParam(this->text(hay)).findPattern(this->text(pattern), start), expected)
            << pattern << " in " << hay << " from " << start;
    }
}

TYPED_TEST(StringSearch, PatternSetsAndEscapes) {
    struct Row {
        const char *pattern, *text;
        int index;
    };
    const Row rows[] = {
        {"[b-d]", "aecx", 2}, {"[!a-c]", "abcd", 3}, {"[]a]", "x]", 1},    {"[^]a]", "a]b", 2},
        {"[a-]", "x-", 1},    {"[-a]", "x-", 1},     {"[z-a]", "abz", -1}, {"[a", "x[a", 1},
        {"[]", "x[]", 1},     {"[\\]x]", "a]", 1},   {"[a\\-c]", "b-", 1}, {"\\*", "a*", 1},
        {"\\\\", "a\\", 1},   {"a\\", "a\\", 0},     {"\\[a]", "a[a]", 1}, {"*", "abc", 0},
        {"*", "", -1},        {"c*", "abc", 2},      {"b**d", "abcd", 1},  {"", "abc", -1},
        {"a.", "ba", -1},     {".", "a", 0},         {"[^^]", "^a", 1},    {"[a^]", "b^", 1},
    };
    for (const Row& row : rows)
        EXPECT_EQ(TypeParam(this->text(row.text)).findPattern(TypeParam(this->text(row.pattern))),
                  row.index)
            << row.pattern << " in " << row.text;
    EXPECT_EQ(TypeParam(this->text("ab")).findPattern(this->text("*"), 2), -1);
}

TYPED_TEST(StringSearch, HardCasesTakeNoMoreThanTheirLength) {
    // Each would take minutes where every place is tried with every other.
    const std::string many(300000, 'a');
    TypeParam s{this->text(many)};
    EXPECT_EQ(s.find(this->text(std::string(100000, 'a') + "b")), -1);
    EXPECT_EQ(s.find(this->text("b" + std::string(100000, 'a'))), -1);
    std::string stars;
    for (int i = 0; i < 30; ++i)
        stars += "*a";
    EXPECT_EQ(s.findPattern(this->text(stars + "*b")), -1);
    const TypeParam open{this->text(std::string(20000, '['))};
    EXPECT_EQ(open.findPattern(this->text(std::string(4000, '[') + "b")), -1);
    s.replaceAll(this->text("a"), this->text("ax"));
    EXPECT_EQ(s.getLength(), 600000);
    s.replaceAll(this->text("ax"), this->text(""));
    EXPECT_TRUE(s.isEmpty());
}

} // namespace
