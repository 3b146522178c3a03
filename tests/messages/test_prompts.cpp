// Questions asked by whole tools: on a terminal, from a file, and from nowhere.

#include "kit/process.h"
#include "kit/temp_tree.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

kit::Result onTerminal(const char* what, const std::string& typed) {
    kit::RunOptions options;
    options.pty = true;
    options.timeoutSeconds = 20;
    options.input = typed;
    return kit::run({"prompt_tool", what}, options);
}

kit::Result interruptedAt(const char* what, int signal, const std::string& typed = "") {
    kit::RunOptions options;
    options.pty = true;
    options.timeoutSeconds = 20;
    options.input = typed;
    options.signal = signal;
    options.signalAfter = "Password: ";
    return kit::run({"prompt_tool", what}, options);
}

TEST(Prompts, ASecretIsNotShownAndTheEchoComesBack) {
    const kit::Result secret = onTerminal("secret", "swordfish\n");
    EXPECT_EQ(secret.status, 0);
    EXPECT_EQ(secret.out, "Login: Password: \r\n");
    EXPECT_EQ(secret.err, "secret: swordfish\n");
    EXPECT_FALSE(secret.echoAtInput);
    EXPECT_TRUE(secret.echoAtEnd);

    for (const char* nothing : {"\n", "\x04"}) { // an empty line, the end of input
        const kit::Result none = onTerminal("secret", nothing);
        EXPECT_EQ(none.status, 3);
        EXPECT_EQ(none.out, "Login: Password: \r\n");
        EXPECT_TRUE(none.echoAtEnd);
    }
}

TEST(Prompts, TypedAheadIsNotLost) {
    const kit::Result both = onTerminal("both", "swordfish\nmary\n");
    EXPECT_EQ(both.status, 0);
    EXPECT_EQ(both.err, "secret: swordfish\nname: mary\n");
    EXPECT_EQ(both.out.find("swordfish"), std::string::npos);
    EXPECT_TRUE(both.echoAtEnd);
}

TEST(Prompts, ASignalTakesItsUsualCourseAfterTheEchoCameBack) {
    for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM}) {
        const kit::Result ended = interruptedAt("secret", signal);
        EXPECT_EQ(ended.signal, signal);
        EXPECT_TRUE(ended.echoAtEnd);
    }
    const kit::Result restarted = interruptedAt("restarted", SIGINT, "swordfish\n");
    EXPECT_EQ(restarted.status, 0);
    EXPECT_TRUE(restarted.echoAtEnd);
    EXPECT_NE(restarted.err.find("signal 2\n"), std::string::npos);
    EXPECT_NE(restarted.err.find("secret: swordfish\n"), std::string::npos);

    // A tool whose handler does not restart calls gets no answer.
    const kit::Result interrupted = onTerminal("interrupted", "");
    EXPECT_EQ(interrupted.status, 0);
    EXPECT_EQ(interrupted.err.find("signal 14\n"), 0u);
    EXPECT_NE(interrupted.err.find("\nsecret: none\n"), std::string::npos);
    EXPECT_TRUE(interrupted.echoAtEnd);

    const kit::Result ignoring = interruptedAt("ignoring", SIGINT, "swordfish\n");
    EXPECT_EQ(ignoring.status, 0);
    EXPECT_EQ(ignoring.err, "secret: swordfish\n");
    EXPECT_TRUE(ignoring.echoAtEnd);
}

TEST(Prompts, SuspendedAndContinuedTheTerminalFollows) {
    const kit::Result result = onTerminal("suspended", "");
    EXPECT_EQ(result.err, "echo off\nstopped\necho on\necho off\nended by 15\necho on\n");
    EXPECT_TRUE(result.echoAtEnd);
}

TEST(Prompts, WithoutATerminalTheSameTextsAppear) {
    kit::RunOptions options;
    options.input = "swordfish\r\nmary";
    const kit::Result both = kit::run({"prompt_tool", "both"}, options);
    EXPECT_EQ(both.out, "Login: Password: \nLogin: Name: ");
    EXPECT_EQ(both.err, "secret: swordfish\nname: mary\n");

    options.closeStdin = true;
    const kit::Result closed = kit::run({"prompt_tool", "secret"}, options);
    EXPECT_EQ(closed.status, 3);
    EXPECT_EQ(closed.out, "Login: Password: \n");
    const kit::Result defaulted = kit::run({"prompt_tool", "confirm"}, options);
    EXPECT_EQ(defaulted.status, 2);
    EXPECT_EQ(defaulted.out, "Save: Discard changes? Yes/No/[Cancel] ");
}

TEST(Prompts, AToolOutlivesItsOutput) {
    for (const char* what : {"shown", "secret", "confirm", "fatal"}) {
        const int status = std::string(what) == "fatal" ? 1 : 0;
        kit::RunOptions options;
        options.input = "yes\n";
        options.closeStdout = true;
        EXPECT_EQ(kit::run({"prompt_tool", what}, options).status, status) << what;
        options.closeStdout = false;
        options.stdoutFile = "/dev/full";
        const kit::Result full = kit::run({"prompt_tool", what}, options);
        EXPECT_EQ(full.status, status) << what;
        EXPECT_EQ(full.err.find("no such thing as \"fatal\"\n") == 0, status == 1);
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
