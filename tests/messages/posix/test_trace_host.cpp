// SPDX-License-Identifier: Apache-2.0
#include "kit/process.h"
#include "kit/temp_tree.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

TEST(Trace, WaitsForNobodyAtAPipe) {
    const kit::TempTree tree;
    const std::string pipe = tree.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    kit::RunOptions options;
    options.timeoutSeconds = 20;
    const kit::Result result =
        kit::run({"trace_tool", "-trace", "a", "-trace_file", pipe, "a=1"}, options);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err,
              "-trace_file: cannot write '" + pipe + "': No such device or address\ntrace a: 1\n");
}

} // namespace
