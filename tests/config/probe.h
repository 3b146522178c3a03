// SPDX-License-Identifier: Apache-2.0
/// @file
/// Runs of config_probe: a tool that answers a script.
#pragma once

#include "kit/table.h"
#include "testkit/process.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Lines = std::vector<std::string>;

/// What the probe says to a script; its answers must be as many as the commands.
inline Lines ask(const Lines& script, moxkit::RunOptions options = {}, Lines arguments = {},
                 const std::string& program = "config_probe") {
    for (const std::string& command : script)
        options.input += command + "\n";
    arguments.insert(arguments.begin(), program);
    const moxkit::Result result = moxkit::run(arguments, options);
    EXPECT_EQ(result.status, 0) << result.err;
    Lines answers = kit::lines(result.out);
    EXPECT_EQ(answers.size(), script.size()) << result.out << result.err;
    answers.resize(script.size());
    return answers;
}
