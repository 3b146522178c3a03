// SPDX-License-Identifier: Apache-2.0
// Commands: real programs that fail, hang, flood and stop reading.
#include "tools/services/KazCommand.h"

#include "kit/await.h"
#include "kit/host.h"
#include "kit/random.h"
#include "kit/valgrind.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

std::string peerProgram() {
    return moxkit::binDirectory() + "/service_peer" + (kit::hasDrives ? ".exe" : "");
}

KazCommand peer(const char* what) {
    KazCommand command(peerProgram().c_str());
    command.add(what);
    return command;
}

/// Text of a program whose runtime library writes line ends as its host has them.
std::string textOf(const KazString& output) {
    std::string text(output.getValue(), static_cast<std::size_t>(output.getLength()));
    std::erase(text, '\r');
    return text;
}

/// As the peer tells its arguments.
std::string told(const std::vector<std::string>& words) {
    std::string result;
    for (const std::string& word : words)
        result += word + '\x02';
    return result;
}

TEST(Command, ArgumentsArriveAsTheyAre) {
    kit::Random random;
    for (int i = 0; i < 20; ++i) {
        std::vector<std::string> words{"",        "-x",     "a b",   "$(touch x)",
                                       "`x`;'\"", "%PATH%", "\\\\\""};
        for (int n = random.between(1, 20); n > 0; --n)
            words.push_back(random.text(12, "ab \\\"'$`;&|<>^%!*?()~#=-"));
        KazCommand command = peer("arguments");
        KazCommand line =
            KazCommand::shell(kit::hasDrives ? "\"%PEER%\" arguments" : "\"$PEER\" arguments");
        line.setVariable("PEER", peerProgram().c_str());
        std::vector<std::string> lineWords = words;
        for (std::string& word : lineWords)
            if (kit::hasDrives) // Wine's interpreter reads percent signs twice
                std::erase(word, '%');
        for (const std::string& word : words)
            command.add(word.c_str());
        for (const std::string& word : lineWords)
            line.add(word.c_str());
        ASSERT_TRUE(command.run()) << command.getErrorText().getValue();
        ASSERT_EQ(textOf(command.getOutput()), told(words));
        ASSERT_TRUE(line.run()) << line.getErrorText().getValue();
        ASSERT_EQ(textOf(line.getOutput()), told(lineWords));
    }
    KazCommand control = peer("arguments");
    control.add("a\nb\x01").add(nullptr);
    ASSERT_TRUE(control.run());
    EXPECT_EQ(textOf(control.getOutput()), told({"a\nb\x01", ""}));
}

TEST(Command, InputAndOutputMayBeLarge) {
    kit::Random random;
    const std::string text = random.text(3, "x") + random.text(3000000, "abc ") + "end";
    KazCommand copy = peer("copy");
    EXPECT_TRUE(copy.setInput(text.c_str()).run());
    EXPECT_EQ(textOf(copy.getOutput()), text);
    // Nobody reads it: no failure, and nothing hangs.
    KazCommand deaf = peer("exit");
    EXPECT_TRUE(deaf.add("0").setInput(text.c_str()).run());
    // Both kinds at once, more than any pipe holds.
    KazCommand both = peer("flood");
    EXPECT_TRUE(both.add("500000").run());
    EXPECT_EQ(both.getOutput().getLength(), 500000);
    EXPECT_EQ(both.getErrors().getLength(), 500000);
    both.setOutputLimit(1234);
    EXPECT_TRUE(both.run());
    EXPECT_STREQ(both.getOutput().getValue(), std::string(1234, 'o').c_str());
    EXPECT_STREQ(both.getErrors().getValue(), std::string(1234, 'e').c_str());
    // Without input there is none: it does not wait for the tool's own.
    KazCommand empty = peer("copy");
    EXPECT_TRUE(empty.run());
    EXPECT_TRUE(empty.getOutput().isEmpty());
}

TEST(Command, DirectoryAndVariables) {
    const moxkit::TempTree tree;
    const std::string there = tree.mkdir("a b");
    KazCommand touch = peer("touch");
    EXPECT_TRUE(touch.add("made").setDirectory(tree.native("a b").c_str()).run());
    EXPECT_TRUE(tree.exists("a b/made"));
    const moxkit::ScopedEnv taken("TAKEN_OUT", "x");
    const moxkit::ScopedEnv changed("CHANGED", "x");
    const auto valueOf = [](KazCommand command, const char* name) {
        command.add(name).run();
        return textOf(command.getOutput());
    };
    KazCommand variable = peer("variable");
    variable.setVariable("TAKEN_OUT", "once").setVariable("TAKEN_OUT", nullptr);
    variable.setVariable("CHANGED", nullptr).setVariable("CHANGED", "a=b c");
    variable.setVariable("NEW", "n").setVariable("", "x").setVariable("A=B", "x");
    variable.setVariable(nullptr, "x");
    EXPECT_EQ(valueOf(variable, "TAKEN_OUT"), "(unset)\n");
    EXPECT_EQ(valueOf(variable, "CHANGED"), "a=b c\n");
    EXPECT_EQ(valueOf(variable, "NEW"), "n\n");
    EXPECT_EQ(valueOf(peer("variable"), "TAKEN_OUT"), "x\n");
    EXPECT_STREQ(std::getenv("CHANGED"), "x");
}

/// Where the name begins with "-" or ".", too.
TEST(Command, ProgramsAreFoundAlongThePathOrFromHere) {
    const moxkit::TempTree tree;
    kit::placeProgram("service_peer", tree.path());
    const std::string extension = kit::hasDrives ? ".exe" : "";
    const std::string name = "-peer";
    ASSERT_EQ(std::rename(tree.path("service_peer" + extension).c_str(),
                          tree.path(name + extension).c_str()),
              0);
    const std::string path = tree.path() + (kit::hasDrives ? ";" : ":") + std::getenv("PATH");
    const moxkit::ScopedEnv own("PATH", path.c_str());
    KazCommand found(name.c_str());
    EXPECT_TRUE(found.add("exit").add("0").setDirectory(tree.native().c_str()).run())
        << found.getErrorText().getValue();
    KazCommand native(tree.native(name + extension).c_str());
    EXPECT_TRUE(native.add("exit").add("0").run()) << native.getErrorText().getValue();
}

struct Failure {
    const char* what;
    std::function<KazCommand()> make;
    int status;
    std::string text;
};

TEST(Command, SaysWhatWentWrong) {
    kit::leaveOutUnderValgrind("its child cannot say that nothing was started");
    const moxkit::TempTree tree;
    tree.write("plain", "not a program");
    const std::string program =
        "\"" + (peerProgram().size() > 60 ? peerProgram().substr(0, 60) + "..." : peerProgram()) +
        "\"";
    const std::string missing = std::strerror(ENOENT);
    const Failure failures[] = {
        {"none", [] { return peer("exit").add("0"); }, 0, ""},
        {"a status", [] { return peer("exit").add("3"); }, 3, program + " ended with status 3"},
        {"a status with a reason",
         [] { return peer("exit").add("3").add("first\nthe \x1b[31m last \n \n"); }, 3,
         program + " ended with status 3: the \\x1B[31m last"},
        {"a long reason", [] { return peer("exit").add("1").add(std::string(500, 'x').c_str()); },
         1, program + " ended with status 1: " + std::string(200, 'x')},
        {"no program", [] { return KazCommand("no-such-\x1b-program"); }, -1,
         "\"no-such-\\x1B-program\" could not be started: " + missing},
        {"no name", [] { return KazCommand(nullptr); }, -1,
         "\"\" could not be started: " + missing},
        {"no directory",
         [&] { return peer("exit").add("0").setDirectory(tree.native("no").c_str()); }, -1,
         program + " could not be started: " + missing},
        {"a line", [] { return KazCommand::shell("exit 5"); }, 5, "\"exit 5\" ended with status 5"},
    };
    for (const Failure& failure : failures) {
        SCOPED_TRACE(failure.what);
        KazCommand command = failure.make();
        EXPECT_STREQ(command.getErrorText().getValue(), "") << "before it was run";
        EXPECT_EQ(command.run(), failure.text.empty());
        EXPECT_EQ(command.getStatus(), failure.status);
        EXPECT_EQ(command.getError(), failure.status == -1 ? ENOENT : 0);
        EXPECT_EQ(command.getErrorText().getValue(), failure.text);
        EXPECT_EQ(command.getSignal(), 0);
        EXPECT_FALSE(command.isTimedOut());
    }
}

TEST(Command, IsStoppedAtItsLimitAndKeepsWhatItHas) {
    struct Case {
        const char* what;
        int kept;
    };
    for (const Case& each : {Case{"hang", 6}, Case{"flood-forever", 1000}}) {
        KazCommand command = peer(each.what);
        const auto start = Clock::now();
        EXPECT_FALSE(command.setTimeout(kit::hasDrives ? 3000 : 300).setOutputLimit(1000).run());
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
        EXPECT_TRUE(command.isTimedOut());
        EXPECT_EQ(command.getStatus(), -1);
        EXPECT_EQ(command.getSignal(), 0);
        EXPECT_EQ(command.getOutput().getLength(), each.kept);
        EXPECT_GE(command.getErrorText().find("was stopped after"), 0);
    }
    KazCommand inTime = peer("exit");
    EXPECT_FALSE(inTime.add("4").setTimeout(60000).run());
    EXPECT_EQ(inTime.getStatus(), 4);
}

TEST(Command, TheNextRunReplacesTheResultsOfTheLast) {
    const moxkit::TempTree tree;
    KazCommand command = KazCommand::shell(kit::hasDrives ? "if exist gone (exit 1) else echo out"
                                                          : "test ! -e gone && echo out");
    command.setDirectory(tree.native().c_str());
    EXPECT_TRUE(command.run());
    EXPECT_EQ(textOf(command.getOutput()), "out\n");
    tree.write("gone", "");
    EXPECT_FALSE(command.run());
    EXPECT_TRUE(command.getOutput().isEmpty());
    EXPECT_EQ(command.getStatus(), 1);
}

TEST(Command, StartsInTheBackground) {
    kit::leaveOutUnderValgrind("its child cannot say that nothing was started");
    const moxkit::TempTree tree;
    KazCommand command = peer("touch");
    EXPECT_TRUE(command.add(tree.path("made").c_str()).start());
    EXPECT_EQ(command.getStatus(), 0);
    EXPECT_EQ(kit::awaitText(tree, "made"), "touched\n");
    KazCommand missing("no-such-program");
    EXPECT_FALSE(missing.start());
    EXPECT_EQ(missing.getError(), ENOENT);
}

TEST(Command, TextForMessages) {
    KazCommand command("diff");
    command.add("-u").add("a b").add("it's").add("\x1b");
    EXPECT_STREQ(command.getText().getValue(), "diff -u \"a b\" \"it's\" \"\\x1B\"");
    EXPECT_STREQ(KazCommand::shell("ls | wc").add("a b").getText().getValue(), "ls | wc \"a b\"");
}

} // namespace
