// SPDX-License-Identifier: Apache-2.0
// Questions asked by whole tools: from a file, and from nowhere.

#include "kit/host.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

namespace {

TEST(Prompts, WithoutATerminalTheSameTextsAppear) {
    moxkit::RunOptions options;
    options.input = "swordfish\r\nmary";
    const moxkit::Result both = moxkit::run({"prompt_tool", "both"}, options);
    EXPECT_EQ(both.out, "Login: Password: \nLogin: Name: ");
    EXPECT_EQ(both.err, "Password: swordfish\nName: mary\n");

    options.closeStdin = true;
    const moxkit::Result closed = moxkit::run({"prompt_tool", "secret"}, options);
    EXPECT_EQ(closed.status, 3);
    EXPECT_EQ(closed.out, "Login: Password: \n");
    const moxkit::Result defaulted = moxkit::run({"prompt_tool", "confirm"}, options);
    EXPECT_EQ(defaulted.status, 2);
    EXPECT_EQ(defaulted.out, "Save: Discard changes? Yes/No/[Cancel] ");
}

TEST(Prompts, AToolOutlivesItsOutput) {
    for (const std::string& file : {std::string(), kit::fullDevice()}) {
        moxkit::RunOptions options;
        options.input = "yes\n";
        options.closeStdout = file.empty();
        options.stdoutFile = file;
        EXPECT_EQ(moxkit::run({"prompt_tool", "secret"}, options).status, 0);
        EXPECT_EQ(moxkit::run({"prompt_tool", "confirm"}, options).status, 0);
        EXPECT_EQ(moxkit::run({"prompt_tool", "back"}, options).status, 0);
        const moxkit::Result fatal = moxkit::run({"prompt_tool", "fatal"}, options);
        EXPECT_EQ(fatal.status, 1);
        EXPECT_EQ(fatal.err, "no such thing as \"fatal\"\n");
    }
}

TEST(Prompts, WithoutOutputMessagesDoNotEndUpInTheUsersFile) {
    const moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.closeStdin = true;
    options.closeStdout = true;
    EXPECT_EQ(moxkit::run({"prompt_tool", "keeping", tree.path("file")}, options).status, 0);
    EXPECT_EQ(tree.read("file"), "data\n");
}

} // namespace
