// SPDX-License-Identifier: Apache-2.0
// Questions asked by whole tools on a terminal, and signals that come in between.

#include "kit/process.h"

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

} // namespace
