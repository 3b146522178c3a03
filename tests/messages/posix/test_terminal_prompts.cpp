// SPDX-License-Identifier: Apache-2.0
// Questions asked by whole tools on a terminal, and signals that come in between.

#include "testkit/process.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

moxkit::Result onTerminal(const char* what, const std::string& typed, int signal = 0) {
    moxkit::RunOptions options;
    options.pty = true;
    options.timeoutSeconds = 20;
    options.input = typed;
    options.signal = signal;
    options.signalAfter = signal != 0 ? "Password: " : "";
    moxkit::Result result = moxkit::run({"prompt_tool", what}, options);
    EXPECT_TRUE(result.echoAtEnd);
    return result;
}

TEST(Prompts, ASecretIsNotShownAndTypingAheadIsNotLost) {
    const moxkit::Result secret = onTerminal("secret", "swordfish\n");
    EXPECT_EQ(secret.status, 0);
    EXPECT_EQ(secret.out, "Login: Password: \r\n");
    EXPECT_EQ(secret.err, "Password: swordfish\n");
    EXPECT_FALSE(secret.echoAtInput);

    for (const char* nothing : {"\n", "\x04"}) { // an empty line, the end of input
        const moxkit::Result none = onTerminal("secret", nothing);
        EXPECT_EQ(none.status, 3);
        EXPECT_EQ(none.out, "Login: Password: \r\n");
    }
    const moxkit::Result both = onTerminal("both", "swordfish\nmary\n");
    EXPECT_EQ(both.err, "Password: swordfish\nName: mary\n");
    EXPECT_EQ(both.out.find("swordfish"), std::string::npos);
}

TEST(Prompts, ASignalTakesItsUsualCourseAfterTheEchoCameBack) {
    for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM})
        EXPECT_EQ(onTerminal("secret", "", signal).signal, signal);

    // A tool whose handler does not restart calls gets no answer.
    const moxkit::Result interrupted = onTerminal("interrupted", "");
    EXPECT_EQ(interrupted.status, 0);
    EXPECT_EQ(interrupted.err.find("signal 14\n"), 0u);
    EXPECT_NE(interrupted.err.find("\nPassword: none\n"), std::string::npos);

    const moxkit::Result ignoring = onTerminal("ignoring", "swordfish\n", SIGINT);
    EXPECT_EQ(ignoring.err, "Password: swordfish\n");

    EXPECT_EQ(onTerminal("suspended", "").err,
              "echo off\nstopped\necho on\necho off\nended by 15\necho on\n");
}

} // namespace
