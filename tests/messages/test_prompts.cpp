// SPDX-License-Identifier: Apache-2.0
// Questions asked by whole tools: from a file, and from nowhere.

#include "kit/host.h"
#include "kit/process.h"
#include "kit/temp_tree.h"

#include <gtest/gtest.h>

namespace {

TEST(Prompts, WithoutATerminalTheSameTextsAppear) {
    kit::RunOptions options;
    options.input = "swordfish\r\nmary";
    const kit::Result both = kit::run({"prompt_tool", "both"}, options);
    EXPECT_EQ(both.out, "Login: Password: \nLogin: Name: ");
    EXPECT_EQ(both.err, "Password: swordfish\nName: mary\n");

    options.closeStdin = true;
    const kit::Result closed = kit::run({"prompt_tool", "secret"}, options);
    EXPECT_EQ(closed.status, 3);
    EXPECT_EQ(closed.out, "Login: Password: \n");
    const kit::Result defaulted = kit::run({"prompt_tool", "confirm"}, options);
    EXPECT_EQ(defaulted.status, 2);
    EXPECT_EQ(defaulted.out, "Save: Discard changes? Yes/No/[Cancel] ");
}

TEST(Prompts, AToolOutlivesItsOutput) {
    for (const std::string& file : {std::string(), kit::fullDevice()}) {
        kit::RunOptions options;
        options.input = "yes\n";
        options.closeStdout = file.empty();
        options.stdoutFile = file;
        EXPECT_EQ(kit::run({"prompt_tool", "secret"}, options).status, 0);
        EXPECT_EQ(kit::run({"prompt_tool", "confirm"}, options).status, 0);
        EXPECT_EQ(kit::run({"prompt_tool", "back"}, options).status, 0);
        const kit::Result fatal = kit::run({"prompt_tool", "fatal"}, options);
        EXPECT_EQ(fatal.status, 1);
        EXPECT_EQ(fatal.err, "no such thing as \"fatal\"\n");
    }
}

TEST(Prompts, WithoutOutputMessagesDoNotEndUpInTheUsersFile) {
    const kit::TempTree tree;
    kit::RunOptions options;
    options.closeStdin = true;
    options.closeStdout = true;
    EXPECT_EQ(kit::run({"prompt_tool", "keeping", tree.path("file")}, options).status, 0);
    EXPECT_EQ(tree.read("file"), "data\n");
}

TEST(Prompts, TheToolOfTheGuideDoesWhatItSays) {
    kit::RunOptions options;
    options.input = "orders\nyes\n";
    const kit::Result swept = kit::run({"guide_tool"}, options);
    EXPECT_EQ(swept.status, 0);
    EXPECT_EQ(swept.out, "Sweep: System: Sweep: Remove old diagrams? Yes/[No] "
                         "Sweeping ....................\n8 diagrams of \"orders\" removed\n");
    options.input = "\n";
    const kit::Result refused = kit::run({"guide_tool"}, options);
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.out, "Sweep: System: ! no system given\n");
    EXPECT_EQ(refused.err, "no system given\n");
}

} // namespace
