// SPDX-License-Identifier: Apache-2.0
// Tools in surroundings that nobody would wish for: what they say is stated or a
// clear message, whole and as it was meant.
#include "tools/config/toolinfo.h"

#include "testkit/env.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

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

const std::string longText(100000, 'x');
const std::string oddText = "100 %s %n\n${a}\\";

std::string cannotOpen(const std::string& file) {
    return "Can't open ToolInfo file: " + file +
           ",\nis ToolInfo environment variable set correctly?\n";
}

TEST(HostileEnvironment, TextsArriveWholeAndAsTheyAre) {
    const moxkit::TempTree tree;
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
        moxkit::RunOptions options;
        options.env = {{"ToolInfo", tree.write("ToolInfo", "b=2\n")}, {"LC_ALL", "C"}};
        for (const auto& [name, value] : each.environment)
            options.env[name] = value;
        const moxkit::Result result = moxkit::run(each.arguments, options);
        const std::size_t number = static_cast<std::size_t>(&each - cases.data());
        EXPECT_EQ(result.status, each.err.empty() ? 0 : 1) << number;
        EXPECT_TRUE(result.out == each.out) << number << result.out.substr(0, 200);
        EXPECT_TRUE(result.err == each.err) << number << result.err.substr(0, 200);
    }
    EXPECT_TRUE(tree.exists("ToolInfo"));
}

TEST(HostileEnvironment, AFileThatDoesNotTellItsSizeIsReadWhole) {
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
TEST(HostileEnvironment, WhatNeverEndsIsRefused) {
    const moxkit::TempTree tree;
    const std::string large = tree.write("large", "a=1\n");
    ASSERT_EQ(::truncate(large.c_str(), 300 << 20), 0);
    moxkit::RunOptions options;
    options.env["ToolInfo"] = tree.write("ToolInfo", "b=2\n");
    const std::string refused = " holds more than 256 MiB and is not read\n";
    moxkit::Result result = moxkit::run({"moxinfo", "-file", large, "b"}, options);
    EXPECT_EQ(result.err, tree.native("large") + refused + "moxinfo: cannot read " + large + "\n");
    EXPECT_EQ(result.status, 1);
    result = moxkit::run({"moxmsg", "-source", large}, options);
    EXPECT_EQ(result.err, large + ": cannot be read: File too large\n");
    options.env["ToolInfo"] = large;
    EXPECT_EQ(moxkit::run({"moxinfo", "b"}, options).err,
              tree.native("large") + refused + cannotOpen(large));
    options.timeoutSeconds = 20;
    for (const char* silent : {"/proc/kmsg", "/dev/tty", "/dev/zero", "/dev/ptmx"}) {
        options.env["ToolInfo"] = silent;
        EXPECT_EQ(moxkit::run({"moxinfo", "b"}, options).err, cannotOpen(silent));
    }
}

/// A file and a pipe without a writer that take each other's place all the time.
TEST(HostileEnvironment, AFileThatTurnsIntoAPipeIsNotWaitedFor) {
    const moxkit::TempTree tree;
    const std::string file = tree.write("file", "a=1\n"), pipe = tree.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const moxkit::ScopedEnv toolInfo("ToolInfo", tree.write("ToolInfo", "").c_str());
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

TEST(HostileEnvironment, TheSearchPathKeepsAllThatItHeld) {
    const moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.env = {{"ToolInfo", tree.write("ToolInfo", "")},
                   {"PATH", "/bin:" + longText},
                   {"Path", "D:\\%s;" + longText}};
    options.input = "same\tPATH\nsame\tPath\n";
    std::string native = moxkit::binDirectory();
    for (char& c : native)
        c = c == '/' ? '\\' : c;
    EXPECT_EQ(moxkit::run({"config_probe"}, options).out, "=" + moxkit::binDirectory() +
                                                              ":/bin:" + longText + "\n=" + native +
                                                              ";D:\\%s;" + longText + "\n");
}

TEST(HostileEnvironment, WithoutAWorkingDirectoryAbsoluteNamesStillWork) {
    const moxkit::TempTree tree;
    const std::string tool = moxkit::binDirectory() + "/moxinfo";
    const std::pair<std::string, std::string> runs[] = {
        {"b", "2\n"},
        {"-output " + tree.path("written") + " b", ""},
        {"-file rel b", "moxinfo: cannot read rel\n"},
        {"-toolinfo rel b", cannotOpen("rel")},
        {"-output rel b", "rel: cannot be written: No such file or directory\n"}};
    for (const auto& [arguments, said] : runs) {
        moxkit::RunOptions options;
        options.env["ToolInfo"] = tree.write("ToolInfo", "b=2\n");
        options.cwd = tree.mkdir("gone");
        const std::string line = "rmdir " + options.cwd + " && exec " + tool + " " + arguments;
        const moxkit::Result result = moxkit::run({"/bin/sh", "-c", line}, options);
        EXPECT_EQ(result.out + result.err, said);
        EXPECT_EQ(result.status, result.err.empty() ? 0 : 1);
    }
    EXPECT_EQ(tree.read("written"), "2\n");
}

TEST(HostileEnvironment, AnOutputMayHaveTheLongestName) {
    const moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.env["ToolInfo"] = tree.write("ToolInfo", "b=2\n");
    const std::string name(255, 'n');
    const moxkit::Result result =
        moxkit::run({"moxinfo", "-output", tree.path(name), "b"}, options);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(tree.read(name), "2\n");
}

TEST(HostileEnvironment, AnOutputThatCannotBeWrittenLeavesTheFileAsItWas) {
    const moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.env["ToolInfo"] = tree.write("ToolInfo", "b=2\n");
    const std::string file = tree.write("file", "old");
    const std::string line = "trap '' XFSZ; ulimit -f 0; exec " + moxkit::binDirectory() +
                             "/moxinfo -output " + file + " b";
    const moxkit::Result result = moxkit::run({"/bin/sh", "-c", line}, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, file + ": cannot be written: File too large\n");
    EXPECT_EQ(tree.read("file"), "old");
    EXPECT_FALSE(tree.exists("file.new0")) << "nothing stays beside it";
}

} // namespace
