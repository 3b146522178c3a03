// SPDX-License-Identifier: Apache-2.0
// Commands on POSIX: signals, groups, descriptors, and every call that fails.
#include "tools/services/KazCommand.h"

#include "kit/posix/call_sweep.h"
#include "kit/valgrind.h"
#include "testkit/alloc_failure.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

std::string textOf(const KazString& text) {
    return {text.getValue(), static_cast<std::size_t>(text.getLength())};
}

bool isGone(int process) {
    for (int i = 0; i < 200; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(20))) {
        const std::string state = textOf([&] {
            KazCommand status("ps");
            status.add("-o").add("stat=").add(std::to_string(process).c_str()).run();
            return status.getOutput();
        }());
        if (state.empty() || state[0] == 'Z')
            return true;
    }
    return false;
}

TEST(Command, TheLimitIsForAllThatItStartedWhateverItIgnores) {
    KazCommand command = KazCommand::shell(
        "trap '' TERM HUP INT QUIT; (trap '' TERM; sleep 50) & echo $!; sleep 50; wait");
    const auto start = Clock::now();
    EXPECT_FALSE(command.setTimeout(300).run());
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
    EXPECT_TRUE(command.isTimedOut());
    const int child = std::atoi(command.getOutput().getValue());
    ASSERT_GT(child, 1);
    EXPECT_TRUE(isGone(child));
}

TEST(Command, DoesNotWaitForWhatItLeavesBehind) {
    const auto start = Clock::now();
    KazCommand quiet = KazCommand::shell("sleep 20 & echo $!");
    EXPECT_TRUE(quiet.run());
    const int stray = std::atoi(quiet.getOutput().getValue());
    EXPECT_EQ(::kill(stray, SIGKILL), 0);
    KazCommand noisy = KazCommand::shell("timeout 8 yes & timeout 8 yes >&2 & exit 3");
    EXPECT_FALSE(noisy.run());
    EXPECT_EQ(noisy.getStatus(), 3);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
}

TEST(Command, SignalsHaveNames) {
    KazCommand known = KazCommand::shell("kill -SEGV $$");
    EXPECT_FALSE(known.run());
    EXPECT_EQ(known.getSignal(), SIGSEGV);
    EXPECT_EQ(known.getStatus(), -1);
    EXPECT_STREQ(known.getErrorText().getValue(),
                 "\"kill -SEGV $$\" was ended by signal 11 (SIGSEGV)");
    KazCommand nameless = KazCommand::shell("kill -40 $$");
    EXPECT_FALSE(nameless.run());
    EXPECT_STREQ(nameless.getErrorText().getValue(),
                 "\"kill -40 $$\" was ended by signal 40 (SIG40)");
}

TEST(Command, TheShellsOwnStatuses) {
    kit::leaveOutUnderValgrind("its child cannot say that nothing was started");
    const moxkit::TempTree tree;
    tree.write("plain", "x");
    KazCommand missing = KazCommand::shell("no-such-command-anywhere");
    EXPECT_FALSE(missing.run());
    EXPECT_STREQ(missing.getErrorText().getValue(),
                 "\"no-such-command-anywhere\": command not found");
    KazCommand plain = KazCommand::shell("./plain");
    EXPECT_FALSE(plain.setDirectory(tree.path().c_str()).run());
    EXPECT_STREQ(plain.getErrorText().getValue(), "\"./plain\": not executable");
    KazCommand program(tree.path("plain").c_str());
    EXPECT_FALSE(program.run());
    EXPECT_EQ(program.getError(), EACCES);
    std::filesystem::permissions(tree.path("plain"), std::filesystem::perms::owner_all);
    EXPECT_FALSE(program.run());
    EXPECT_EQ(program.getError(), ENOEXEC);
}

TEST(Command, LongNamesAreCutAtWholeCharacters) {
    kit::leaveOutUnderValgrind("its child cannot say that nothing was started");
    const std::string name = std::string(59, 'x') + "\xc3\xa4";
    KazCommand command(name.c_str());
    command.run();
    EXPECT_EQ(command.getErrorText().getValue(),
              "\"" + std::string(59, 'x') + "...\" could not be started: " + std::strerror(ENOENT));
}

/// Neither what the tool has open nor what the library has.
TEST(Command, InheritsTheStandardStreamsAlone) {
    const int open = ::open("/dev/zero", O_RDONLY); // without the flag
    ASSERT_GE(open, 0);
    KazCommand list = KazCommand::shell("ls /proc/$$/fd; cat /proc/$$/environ | wc -c");
    EXPECT_TRUE(list.run());
    EXPECT_EQ(textOf(list.getOutput()).substr(0, 6), "0\n1\n2\n");
    EXPECT_EQ(textOf(list.getOutput()).find("\n3\n"), std::string::npos);
    ::close(open);
    // Also where the tool itself lacks one: pipes are not mistaken for it.
    const int saved = ::dup(0);
    ::close(0);
    KazCommand copy("cat");
    EXPECT_TRUE(copy.setInput("text").run());
    EXPECT_EQ(textOf(copy.getOutput()), "text");
    ::dup2(saved, 0);
    ::close(saved);
}

TEST(Command, ARelativeProgramBeginsHereAndChildrenThatNobodyAwaitsAreTakenAway) {
    const moxkit::TempTree tree;
    tree.mkdir("sub");
    std::filesystem::permissions(tree.write("tool", "#!/bin/sh\npwd\n"),
                                 std::filesystem::perms::owner_all);
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(tree.path());
    KazCommand tool("./tool");
    EXPECT_TRUE(tool.setDirectory(tree.path("sub").c_str()).run());
    EXPECT_EQ(textOf(tool.getOutput()), tree.path("sub") + "\n");
    std::filesystem::current_path(before);
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(KazCommand("true").start());
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(KazCommand("true").run());
    KazCommand zombies = KazCommand::shell("ps -o stat= --ppid \"$PARENT\" | grep -c Z");
    zombies.setVariable("PARENT", std::to_string(::getpid()).c_str()).run();
    EXPECT_EQ(textOf(zombies.getOutput()), "0\n");
}

TEST(Command, WhenNobodyMayKnowTheStatus) {
    const auto usual = std::signal(SIGCHLD, SIG_IGN);
    KazCommand command("true");
    EXPECT_FALSE(command.run());
    std::signal(SIGCHLD, usual);
    EXPECT_EQ(command.getStatus(), -1);
    EXPECT_STREQ(command.getErrorText().getValue(), "\"true\" ended with an unknown status");
}

KazCommand sample(const moxkit::TempTree& tree) {
    KazCommand command = KazCommand::shell("cat; echo err >&2; exit");
    command.add("3").setInput("input").setDirectory(tree.path().c_str());
    command.setVariable("NEW", "x").setVariable("OLD", nullptr).setTimeout(20000);
    return command;
}

class Calls : public testing::Test, protected kit::CallSweep {
protected:
    moxkit::TempTree tree;
};

/// Each call that fails ends in a run that was not started and says so, or in one that
/// has its results; nothing stays open.
TEST_F(Calls, ARunSucceedsOrSaysWhy) {
    KazCommand command = sample(tree);
    sweep([] {}, [&] { command.run(); },
          [&](bool harmless) {
              const bool started = command.getError() == 0;
              EXPECT_TRUE(started || !harmless);
              EXPECT_TRUE(started || command.getError() == error_);
              EXPECT_FALSE(command.getErrorText().isEmpty());
              EXPECT_TRUE(started || (command.getStatus() == -1 && command.getOutput().isEmpty()));
              const bool knowsStatus = std::strcmp(call_, "waitpid") != 0 || harmless;
              EXPECT_TRUE(!started || command.getStatus() == (knowsStatus ? 3 : -1));
              EXPECT_TRUE(!started || !knowsStatus || textOf(command.getOutput()) == "input");
          });
}

TEST_F(Calls, AStartSucceedsOrSaysWhy) {
    KazCommand command("true");
    bool started = false;
    sweep([] {}, [&] { started = command.start(); },
          [&](bool harmless) {
              EXPECT_EQ(started, command.getError() == 0);
              EXPECT_TRUE(started || !harmless);
          });
}

TEST(CommandMemory, ARunSucceedsOrThrows) {
    const moxkit::TempTree tree;
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        const long before = kit::openFiles();
        KazCommand command = sample(tree);
        bool ended = false;
        const long points = moxkit::sweepAllocations(
            [&] {
                ended = false;
                command.run();
                ended = true;
            },
            [&] {
                EXPECT_TRUE(!ended || command.getStatus() == 3 || command.getError() == ENOMEM);
                EXPECT_EQ(kit::openFiles(), before);
            },
            mode);
        EXPECT_GT(points, 10);
        EXPECT_FALSE(command.run());
        EXPECT_EQ(textOf(command.getOutput()), "input");
        EXPECT_EQ(textOf(command.getErrors()), "err\n");
    }
}

} // namespace
