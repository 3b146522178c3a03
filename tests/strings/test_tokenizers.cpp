// SPDX-License-Identifier: Apache-2.0
// The tokenizers of both widths, beside the harness that compares them with a
// plain splitter: nothing to split at, and no memory.

#include "string_kit.h"
#include "testkit/alloc_failure.h"

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

/// All further tokens.
template <class Tokenizer>
Tokens rest(Tokenizer& tokenizer) {
    Tokens result;
    while (!tokenizer.isDone())
        result.push_back(plain(tokenizer.nextString(false)));
    return result;
}

template <class Width>
class Tokenizers : public testing::Test {
protected:
    using Text = TestText<typename Width::String>;
    static typename Width::Quoted quotedOne(const std::string& text, const std::string& set,
                                            const std::string& quotes, char escape) {
        return {typename Width::String(Text(text)), Text(set), Text(quotes),
                wideChar<typename Width::String>(escape)};
    }
};
using Widths = testing::Types<Narrow, Wide>;
TYPED_TEST_SUITE(Tokenizers, Widths);

TYPED_TEST(Tokenizers, WithoutDelimitersOrQuotes) {
    using Text = TestText<typename TypeParam::String>;
    typename TypeParam::Tokenizer all(typename TypeParam::String(Text(" a b ")), nullptr);
    EXPECT_EQ(rest(all), Tokens{" a b "});
    auto quoted = this->quotedOne("a 'b c' d", " ", "'", '\\');
    typename TypeParam::Tokenizer sliced = quoted; // quotes mean nothing to it
    EXPECT_EQ(rest(sliced), (Tokens{"a", "'b", "c'", "d"}));
    typename TypeParam::Tokenizer& base = quoted;
    EXPECT_EQ(rest(base), (Tokens{"a", "'b c'", "d"}));
}

TYPED_TEST(Tokenizers, SurviveFailedAllocations) {
    const auto source = this->quotedOne("a 'b c' d\\ e", " ", "'", '\\');
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        auto target = this->quotedOne("x-y", "-", "", 'q');
        const long failures = moxkit::sweepAllocations(
            [&] {
                auto copy = source;
                target = copy;
            },
            [&] {
                auto untouched = target;
                EXPECT_EQ(rest(untouched), (Tokens{"x", "y"}));
            },
            mode);
        EXPECT_EQ(failures, 4);
        EXPECT_EQ(rest(target), (Tokens{"a", "'b c'", "d\\ e"}));
    }
}

} // namespace
