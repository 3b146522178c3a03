// Searches in words: what patterns mean, and cases that are hard for searches.
// The fuzz harnesses compare them with ones that try every place.

#include "both_strings.h"

namespace {

template <class String>
class StringSearch : public testing::Test {
protected:
    static TestText<String> text(const std::string& s) { return TestText<String>(s); }
};
TYPED_TEST_SUITE(StringSearch, BothStrings);

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

TYPED_TEST(StringSearch, ReplacementsMayOutgrowAShortText) {
    // Near the end of a text there is no room for whole steps.
    std::string hay, expected;
    const std::string by(31, 'x');
    for (int n = 0; n < 40; ++n) {
        TypeParam s{this->text(hay)};
        s.replaceAll(this->text("a"), this->text(by));
        EXPECT_EQ(plain(s), expected) << hay;
        hay += "ba";
        expected += "b" + by;
    }
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
