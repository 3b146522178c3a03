// Questions asked by whole tools: on a terminal, from a file, and from nowhere.

#include "kit/process.h"
#include "kit/temp_tree.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

kit::Result onTerminal(const char* what, const std::string& typed, int signal = 0) {
    kit::RunOptions options;
    options.pty = true;
    options.timeoutSeconds = 20;
    options.input = typed;
    options.signal = signal;
    options.signalAfter = signal != 0 ? "Password: " : "";
    kit::Result result = kit::run({"prompt_tool", what}, options);
    EXPECT_TRUE(result.echoAtEnd);
    return result;
}

TEST(Prompts, ASecretIsNotShownAndTypingAheadIsNotLost) {
    const kit::Result secret = onTerminal("secret", "swordfish\n");
    EXPECT_EQ(secret.status, 0);
    EXPECT_EQ(secret.out, "Login: Password: \r\n");
    EXPECT_EQ(secret.err, "Password: swordfish\n");
    EXPECT_FALSE(secret.echoAtInput);

    for (const char* nothing : {"\n", "\x04"}) { // an empty line, the end of input
        const kit::Result none = onTerminal("secret", nothing);
        EXPECT_EQ(none.status, 3);
        EXPECT_EQ(none.out, "Login: Password: \r\n");
    }
    const kit::Result both = onTerminal("both", "swordfish\nmary\n");
    EXPECT_EQ(both.err, "Password: swordfish\nName: mary\n");
    EXPECT_EQ(both.out.find("swordfish"), std::string::npos);
}

TEST(Prompts, ASignalTakesItsUsualCourseAfterTheEchoCameBack) {
    for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM})
        EXPECT_EQ(onTerminal("secret", "", signal).signal, signal);

    // A tool whose handler does not restart calls gets no answer.
    const kit::Result interrupted = onTerminal("interrupted", "");
    EXPECT_EQ(interrupted.status, 0);
    EXPECT_EQ(interrupted.err.find("signal 14\n"), 0u);
    EXPECT_NE(interrupted.err.find("\nPassword: none\n"), std::string::npos);

    const kit::Result ignoring = onTerminal("ignoring", "swordfish\n", SIGINT);
    EXPECT_EQ(ignoring.err, "Password: swordfish\n");

    EXPECT_EQ(onTerminal("suspended", "").err,
              "echo off\nstopped\necho on\necho off\nended by 15\necho on\n");
}

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
    for (const char* const file : {"", "/dev/full"}) {
        kit::RunOptions options;
        options.input = "yes\n";
        options.closeStdout = *file == '\0';
        options.stdoutFile = file;
        EXPECT_EQ(kit::run({"prompt_tool", "secret"}, options).status, 0);
        EXPECT_EQ(kit::run({"prompt_tool", "confirm"}, options).status, 0);
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
