// SPDX-License-Identifier: Apache-2.0
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

TEST(Trace, WaitsForNobodyAtAPipe) {
    const moxkit::TempTree tree;
    const std::string pipe = tree.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    moxkit::RunOptions options;
    options.timeoutSeconds = 20;
    const moxkit::Result result =
        moxkit::run({"trace_tool", "-trace", "a", "-trace_file", pipe, "a=1"}, options);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err,
              "-trace_file: cannot write '" + pipe + "': No such device or address\ntrace a: 1\n");
}

} // namespace
