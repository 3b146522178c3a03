// The tokenizers of both widths in words; a fuzz harness compares them with a
// plain splitter.

#include "kit/alloc_failure.h"
#include "string_kit.h"

#include "tools/strings/KazQuotedStringTokenizer.h"
#include "tools/strings/KazWQuotedStringTokenizer.h"

#include <gtest/gtest.h>

namespace {

struct Narrow {
    using String = KazString;
    using Tokenizer = KazStringTokenizer;
    using Quoted = KazQuotedStringTokenizer;
};

struct Wide {
    using String = KazWString;
    using Tokenizer = KazWStringTokenizer;
    using Quoted = KazWQuotedStringTokenizer;
};

using Tokens = std::vector<std::string>;

/// All further tokens, each fetched with the same @p skipRuns.
template <class Tokenizer>
Tokens rest(Tokenizer& tokenizer, bool skipRuns) {
    Tokens result;
    while (!tokenizer.isDone()) {
        result.push_back(plain(tokenizer.nextString(skipRuns)));
        if (result.size() > 1000)
            return {"does not end"};
    }
    EXPECT_TRUE(tokenizer.isFinished());
    EXPECT_TRUE(tokenizer.nextString(skipRuns).isEmpty());
    return result;
}

template <class Width>
class Tokenizers : public testing::Test {
protected:
    using Text = TestText<typename Width::String>;
    static typename Width::Tokenizer plainOne(const std::string& text, const std::string& set) {
        return {typename Width::String(Text(text)), Text(set)};
    }
    static typename Width::Quoted quotedOne(const std::string& text, const std::string& set,
                                            const std::string& quotes, char escape) {
        return {typename Width::String(Text(text)), Text(set), Text(quotes),
                wideChar<typename Width::String>(escape)};
    }
};
using Widths = testing::Types<Narrow, Wide>;
TYPED_TEST_SUITE(Tokenizers, Widths);

TYPED_TEST(Tokenizers, SplitAtDelimiters) {
    struct Row {
        const char *text, *delimiters;
        bool skipRuns;
        Tokens tokens;
    };
    const Row rows[] = {
        {"a,b,,c", ",", false, {"a", "b", "", "c"}},
        {"a,b,,c", ",", true, {"a", "b", "c"}},
        {",a,", ",", false, {"a"}},
        {",", ",", false, {}},
        {",,,", ",", false, {}},
        {"", ",", false, {}},
        {"x y\r", " ", true, {"x", "y"}},
        {"x\r y\r\r", " ", false, {"x", "y\r"}},
        {"x \r", " ", false, {"x", ""}},
        {"a b", "", false, {"a b"}},
        {"one", ",", true, {"one"}},
    };
    for (const Row& row : rows) {
        auto tokenizer = this->plainOne(row.text, row.delimiters);
        EXPECT_EQ(tokenizer.isDone(), row.tokens.empty()) << row.text;
        EXPECT_EQ(rest(tokenizer, row.skipRuns), row.tokens) << row.text;
    }
    typename TypeParam::Tokenizer all(
        typename TypeParam::String(TestText<typename TypeParam::String>(" a b ")), nullptr);
    EXPECT_EQ(rest(all, true), Tokens{" a b "});
}

TYPED_TEST(Tokenizers, QuotesAndEscapesProtectDelimiters) {
    struct Row {
        const char *text, *quotes;
        Tokens tokens;
    };
    const Row rows[] = {
        {"a \"b c\" d", "\"", {"a", "\"b c\"", "d"}},
        {"a\\ b c", "\"", {"a\\ b", "c"}},
        {"a \"b c", "\"", {"a", "\"b c"}},
        {"'a \" b' \"c ' d\"", "'\"", {"'a \" b'", "\"c ' d\""}},
        {"\\\"a b\\\"", "\"", {"\\\"a", "b\\\""}},
        {"a \"b\\\" c\" d", "\"", {"a", "\"b\\\" c\"", "d"}},
        {"  ", "\"", {}},
        {"a b", "", {"a", "b"}},
    };
    for (const Row& row : rows) {
        auto tokenizer = this->quotedOne(row.text, " ", row.quotes, '\\');
        EXPECT_EQ(rest(tokenizer, false), row.tokens) << row.text;
    }
}

TYPED_TEST(Tokenizers, CopiesGoOnByThemselves) {
    auto first = this->quotedOne("a 'b c' d e", " ", "'", '\\');
    first.nextString(false);
    auto copy = first;
    auto assigned = this->quotedOne("other-text", "-", "", 'q');
    assigned = first;
    assigned = *&assigned;
    const Tokens expected = {"'b c'", "d", "e"};
    EXPECT_EQ(rest(first, false), expected);
    EXPECT_EQ(rest(copy, false), expected);
    copy = assigned;
    EXPECT_EQ(rest(assigned, true), expected);
    typename TypeParam::Tokenizer sliced = copy; // quotes mean nothing to it
    EXPECT_EQ(rest(sliced, false), (Tokens{"'b", "c'", "d", "e"}));
    typename TypeParam::Tokenizer& base = copy;
    EXPECT_EQ(rest(base, false), expected);
}

TYPED_TEST(Tokenizers, SurviveFailedAllocations) {
    const auto source = this->quotedOne("a 'b c' d", " ", "'", '\\');
    for (const auto mode : {kit::FailAllocation::once, kit::FailAllocation::onward}) {
        auto target = this->quotedOne("x-y", "-", "", 'q');
        const long failures = kit::sweepAllocations(
            [&] {
                auto copy = source;
                target = copy;
            },
            [&] {
                auto untouched = target;
                EXPECT_EQ(rest(untouched, false), (Tokens{"x", "y"}));
            },
            mode);
        EXPECT_EQ(failures, 4);
        EXPECT_EQ(rest(target, false), (Tokens{"a", "'b c'", "d"}));

        std::string token;
        const auto take = [&] {
            token = plain(this->quotedOne("  'a b' ", " ", "'", '\\').nextString(true));
        };
        EXPECT_GE(kit::sweepAllocations(
                      take, [&] { EXPECT_EQ(token, ""); }, mode),
                  4);
        EXPECT_EQ(token, "'a b'");
    }
}

} // namespace
