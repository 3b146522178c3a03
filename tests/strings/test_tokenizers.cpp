// SPDX-License-Identifier: Apache-2.0
// The tokenizers of both widths, beside the harness that compares them with a
// plain splitter: nothing to split at, and no memory.

#include "string_kit.h"
#include "testkit/alloc_failure.h"

#include "tools/strings/KazQuotedStringTokenizer.h"
#include "tools/strings/KazWQuotedStringTokenizer.h"

#include <gtest/gtest.h>

namespace {

using Tokens = std::vector<std::string>;

/// All further tokens.
template <class Tokenizer>
Tokens rest(Tokenizer& tokenizer) {
    Tokens result;
    while (!tokenizer.isDone())
        result.push_back(plain(tokenizer.nextString(false)));
    return result;
}

template <class String, class Tokenizer, class Quoted>
void expectTokens() {
    using Text = TestText<String>;
    Tokenizer all(String(Text(" a b ")), nullptr);
    EXPECT_EQ(rest(all), Tokens{" a b "});
    const Quoted source(String(Text("a 'b c' d\\ e")), Text(" "), Text("'"), '\\');
    Quoted quoted = source;
    Tokenizer sliced = quoted; // quotes and escapes mean nothing to it
    EXPECT_EQ(rest(sliced), (Tokens{"a", "'b", "c'", "d\\", "e"}));
    Tokenizer& base = quoted;
    EXPECT_EQ(rest(base), (Tokens{"a", "'b c'", "d\\ e"}));
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        Quoted target(String(Text("x-y")), Text("-"), Text(""), 'q');
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

TEST(Tokenizers, WithoutDelimitersOrQuotesOrMemory) {
    expectTokens<KazString, KazStringTokenizer, KazQuotedStringTokenizer>();
    expectTokens<KazWString, KazWStringTokenizer, KazWQuotedStringTokenizer>();
}

} // namespace
