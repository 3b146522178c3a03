// SPDX-License-Identifier: Apache-2.0
/// @file
/// The fixture of the tests of moxmsg.
#pragma once

#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace moxmsg_test {

class MoxMsg : public testing::Test {
protected:
    moxkit::Result run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "moxmsg");
        return moxkit::run(arguments, options);
    }
    std::string compile(const std::string& source) {
        const moxkit::Result result =
            run({"-source", tree.write("source", source), "-output", tree.path("file")});
        EXPECT_EQ(result.status, 0) << result.err;
        return tree.read("file");
    }
    std::string list() { return run({"-file", tree.path("file")}).out; }

    moxkit::TempTree tree;
    moxkit::RunOptions options;
};

} // namespace moxmsg_test
