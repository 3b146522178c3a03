// SPDX-License-Identifier: Apache-2.0
// Tools in surroundings that nobody would wish for: what they say is stated or a
// clear message, whole and as it was meant.
#include "tools/config/toolinfo.h"

#include "testkit/env.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct Case {
    std::map<std::string, std::string> environment;
    std::vector<std::string> arguments;
    std::string out, err; ///< a tool that reports something ends with 1
};

class HostileEnvironment : public testing::Test {
protected:
    HostileEnvironment() {
        options.env = {{"ToolInfo", tree.write("ToolInfo", "b=2\n")}, {"LC_ALL", "C"}};
    }
    moxkit::Result run(const std::vector<std::string>& line) const {
        return moxkit::run(line, options);
    }
    /// Runs moxinfo from a shell that does something before.
    moxkit::Result runAfter(const std::string& before, const std::string& arguments) const {
        return run({"/bin/sh", "-c",
                    before + " exec " + moxkit::binDirectory() + "/moxinfo " + arguments});
    }

    const moxkit::TempTree tree;
    moxkit::RunOptions options;
};

const std::string longText(100000, 'x');
const std::string oddText = "100 %s %n\n${a}\\";

std::string cannotOpen(const std::string& file) {
    return "Can't open ToolInfo file: " + file +
           ",\nis ToolInfo environment variable set correctly?\n";
}

TEST_F(HostileEnvironment, TextsArriveWholeAndAsTheyAre) {
    const std::string odd = tree.write("%s\n%n", "a=1\n");
    const std::vector<Case> cases = {
        {{{"KAZ_A", longText}}, {"moxinfo", "a"}, longText + "\n", ""},
        {{{"KAZ_A", oddText}}, {"moxinfo", "a", "<${a}>"}, oddText + "\n<" + oddText + ">\n", ""},
        {{{"ToolInfo", longText}}, {"moxinfo", "a"}, "", cannotOpen(longText)},
        {{{"ToolInfo", "/" + longText}}, {"moxinfo"}, "", cannotOpen("/" + longText)},
        {{{"ToolInfo", oddText}}, {"moxinfo", "a"}, "", cannotOpen(oddText)},
        {{{"ToolInfo", odd}}, {"moxinfo", "a"}, "1\n", ""},
        {{{"HOME", longText}}, {"moxinfo", "b"}, "2\n", ""},
        {{{"HOME", odd}}, {"moxinfo", "b"}, "2\n", ""},
        {{{"HOME", longText}, {"ToolInfo", "~/none/x"}}, {"moxinfo"}, "", cannotOpen("~/none/x")},
        {{}, {"moxinfo", longText}, "", "moxinfo: " + longText + " is not defined\n"},
        {{}, {"moxinfo", "${" + longText + "}b"}, "b\n", ""},
        {{}, {"moxinfo", "-toolinfo", longText, "b"}, "", cannotOpen(longText)},
        {{}, {"moxinfo", "-file", longText}, "", "moxinfo: cannot read " + longText + "\n"},
        {{},
         {"moxinfo", "-file", "/proc/self/mem", "b"}, // opens, but reading it fails
         "",
         "moxinfo: cannot read /proc/self/mem\n"},
        {{},
         {"moxinfo", "-output", longText},
         "",
         longText + ": cannot be written: File name too long\n"},
        {{{"LC_ALL", longText}}, {"moxinfo", "b"}, "2\n", ""},
    };
    for (const Case& each : cases) {
        moxkit::RunOptions other = options;
        for (const auto& [name, value] : each.environment)
            other.env[name] = value;
        const moxkit::Result result = moxkit::run(each.arguments, other);
        SCOPED_TRACE(&each - cases.data());
        EXPECT_EQ(result.status, each.err.empty() ? 0 : 1);
        EXPECT_TRUE(result.out == each.out) << result.out.substr(0, 200);
        EXPECT_TRUE(result.err == each.err) << result.err.substr(0, 200);
    }
    EXPECT_TRUE(tree.exists("ToolInfo"));
}

TEST_F(HostileEnvironment, AFileThatDoesNotTellItsSizeIsReadWhole) {
    const char* const file = "/proc/self/mounts";
    const moxkit::ScopedEnv toolInfo("ToolInfo", file);
    std::ifstream in(file);
    int lines = 0, definitions = 0;
    for (std::string line; std::getline(in, line);) {
        const std::size_t equals = line.find('=');
        lines += equals != line.npos;
        definitions += equals != line.npos && TI_Vcont(line.substr(0, equals).c_str()) != nullptr;
    }
    EXPECT_GT(lines, 0);
    EXPECT_EQ(definitions, lines);
}

/// A source that is sparse, so that nobody has to write it.
TEST_F(HostileEnvironment, WhatNeverEndsIsRefused) {
    const std::string large = tree.write("large", "a=1\n");
    ASSERT_EQ(::truncate(large.c_str(), 300 << 20), 0);
    const std::string refused = " holds more than 256 MiB and is not read\n";
    const moxkit::Result result = run({"moxinfo", "-file", large, "b"});
    EXPECT_EQ(result.err, tree.native("large") + refused + "moxinfo: cannot read " + large + "\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(run({"moxmsg", "-source", large}).err, large + ": cannot be read: File too large\n");
    options.env["ToolInfo"] = large;
    EXPECT_EQ(run({"moxinfo", "b"}).err, tree.native("large") + refused + cannotOpen(large));
    options.timeoutSeconds = 20;
    for (const char* silent : {"/proc/kmsg", "/dev/tty", "/dev/zero", "/dev/ptmx"}) {
        options.env["ToolInfo"] = silent;
        EXPECT_EQ(run({"moxinfo", "b"}).err, cannotOpen(silent));
    }
}

/// A file and a pipe without a writer that take each other's place all the time.
TEST_F(HostileEnvironment, AFileThatTurnsIntoAPipeIsNotWaitedFor) {
    const std::string file = tree.write("file", "a=1\n"), pipe = tree.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const moxkit::ScopedEnv toolInfo("ToolInfo", options.env["ToolInfo"].c_str());
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(20);
        for (;;)
            ::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, pipe.c_str(), RENAME_EXCHANGE);
    }
    ::alarm(20);
    int read = 0, tries = 0;
    while (tries < 3000 || read == 0 || read == tries) {
        read += TI_V_user_file(file.c_str(), true) == 0;
        ++tries;
    }
    ::alarm(0);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_STREQ(TI_Vcont("a"), "1");
}

TEST_F(HostileEnvironment, TheSearchPathKeepsAllThatItHeld) {
    options.env["PATH"] = "/bin:" + longText;
    options.env["Path"] = "D:\\%s;" + longText;
    options.input = "same\tPATH\nsame\tPath\n";
    std::string native = moxkit::binDirectory();
    std::replace(native.begin(), native.end(), '/', '\\');
    EXPECT_EQ(run({"config_probe"}).out, "=" + moxkit::binDirectory() + ":/bin:" + longText +
                                             "\n=" + native + ";D:\\%s;" + longText + "\n");
}

TEST_F(HostileEnvironment, WithoutAWorkingDirectoryAbsoluteNamesStillWork) {
    const std::pair<std::string, std::string> runs[] = {
        {"b", "2\n"},
        {"-output " + tree.path("written") + " b", ""},
        {"-file rel b", "moxinfo: cannot read rel\n"},
        {"-toolinfo rel b", cannotOpen("rel")},
        {"-output rel b", "rel: cannot be written: No such file or directory\n"}};
    for (const auto& [arguments, said] : runs) {
        options.cwd = tree.mkdir("gone");
        const moxkit::Result result = runAfter("rmdir " + options.cwd + " &&", arguments);
        EXPECT_EQ(result.out + result.err, said);
        EXPECT_EQ(result.status, result.err.empty() ? 0 : 1);
    }
    EXPECT_EQ(tree.read("written"), "2\n");
}

TEST_F(HostileEnvironment, AnOutputMayHaveTheLongestName) {
    const std::string name(255, 'n');
    EXPECT_EQ(run({"moxinfo", "-output", tree.path(name), "b"}).err, "");
    EXPECT_EQ(tree.read(name), "2\n");
}

TEST_F(HostileEnvironment, AnOutputThatCannotBeWrittenLeavesTheFileAsItWas) {
    const std::string file = tree.write("file", "old");
    const moxkit::Result result = runAfter("trap '' XFSZ; ulimit -f 0;", "-output " + file + " b");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, file + ": cannot be written: File too large\n");
    EXPECT_EQ(tree.read("file"), "old");
    EXPECT_FALSE(tree.exists("file.new0")) << "nothing stays beside it";
}

} // namespace
