// SPDX-License-Identifier: Apache-2.0
#include "greeting.h"

#include <gtest/gtest.h>
#include <testkit/alloc_failure.h>
#include <testkit/process.h>
#include <testkit/temp_tree.h>

TEST(Greeting, NamesWhoIsGreeted) {
    EXPECT_STREQ("Hello, brewery.", greeting("brewery").getValue());
    EXPECT_STREQ("Hello, 100%s.", greeting("100%s").getValue());
}

TEST(Greeting, IsWholeOrThrowsWhereMemoryRunsOut) {
    const KazString name(std::string(1000, 'b').c_str());
    KazString text;
    const long failed = moxkit::sweepAllocations([&] { text = greeting(name.getValue()); },
                                                 [&] { EXPECT_TRUE(text.isEmpty()); });
    EXPECT_GT(failed, 0);
    EXPECT_EQ(1008, text.getLength());
}

TEST(Greeting, IsWhatTheToolWrites) {
    const moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.env["ToolInfo"] = tree.write("ToolInfo", "");
    const moxkit::Result result = moxkit::run({"hello-tool", "-system", "brewery"}, options);
    EXPECT_EQ(0, result.status) << result.err;
    EXPECT_EQ("Hello, brewery.\n", result.out);
}
