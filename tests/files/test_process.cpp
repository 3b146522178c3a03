// SPDX-License-Identifier: Apache-2.0
// Process helpers: words of a command line, program names, and child processes.
#include "tools/files/process.h"

#include "kit/host.h"
#include "testkit/capture.h"
#include "testkit/env.h"
#include "tools/app/KazEditorsBase.h"
#include "tools/app/editors.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

/// A command in the language of each interpreter.
const char* command(const char* posix, const char* windows) {
    return kit::hasDrives ? windows : posix;
}

TEST(Words, NothingAndTheUnclosed) {
    char** argv = nullptr;
    EXPECT_EQ(str_to_argv(nullptr, &argv), 0);
    EXPECT_EQ(argv[0], nullptr);
    std::free(argv);
    EXPECT_EQ(str_to_argv(" \t\n", &argv), 0);
    std::free(argv);
    for (const char* unclosed : {"'", "a \"b", "\"\\\"", "x 'y\\"}) {
        EXPECT_EQ(str_to_argv(unclosed, &argv), -1) << unclosed;
        EXPECT_EQ(argv, nullptr);
    }
    EXPECT_TRUE(argv_to_str(3, nullptr).isEmpty());
    const char* early[] = {"a", nullptr, "b"};
    EXPECT_STREQ(argv_to_str(3, early).getValue(), "a");
}

class Editors : public KazEditorsBase {
public:
    KazString getCreationCommand(const char* name) override {
        if (command)
            return command;
        return KazString("'C:\\my tools\\") + name + "' -editor x";
    }

    KazString command;
};

TEST(Environment, ProgramNameOfAnEditor) {
    {
        Editors editors; // before there is a plain object, which nobody would own then
        EXPECT_STREQ(TI_cprogname("cde"), "cde");
        const std::pair<const char*, const char*> commands[] = {
            {"C:\\bin\\new\\edit.exe -x", "edit.exe"},
            {"\\usr\\bin\\vi", "vi"},
            {" \"\\my dir\\a b\" c", "a b"},
            {"D:\\x\\'one two'\\e'd'", "ed"},
            {"'\\unclosed\\x y", "x y"},
            {"\"one's own\" x", "one's own"},
            {" ", ""}};
        for (const auto& [command, program] : commands) {
            editors.command = command;
            EXPECT_STREQ(TI_cprogname("cde"), program) << command;
        }
    }
    EXPECT_STREQ(TI_cprogname("class editor"), "class editor");
    EXPECT_STREQ(TI_cprogname("../../bin/x"), "x");
    EXPECT_STREQ(TI_cprogname(nullptr), "");
}

TEST(Shell, ShowsOutputBetweenStartAndEnd) {
    const std::string line = command("echo err >&2; printf 'one %%s\\ntwo'; exit 3",
                                     "echo err>&2& echo one %%s& exit 3");
    moxkit::Capture capture;
    int signal = -1;
    EXPECT_EQ(shell_cmd(line.c_str(), &signal), 3);
    EXPECT_EQ(signal, 0);
    EXPECT_EQ(capture.out(), "Executing: " + line + "\nerr\n" + command("one %s\ntwo", "one %%s") +
                                 "\nExecution Complete.\n");
    EXPECT_EQ(capture.err(), "");
}

TEST(Shell, StatusAndOutput) {
    KazString output("before");
    int signal = -1;
    EXPECT_EQ(shell_cmd_output(command("echo x; exit 255", "echo x& exit 255"), output, &signal),
              255);
    EXPECT_STREQ(output.getValue(), "x\n");
    EXPECT_EQ(signal, 0);
    EXPECT_NE(shell_cmd_output("no-such-program-here", output), 0);
    EXPECT_EQ(shell_cmd_output(command("", "rem"), output), 0);
    EXPECT_TRUE(output.isEmpty());
    EXPECT_EQ(shell_cmd_output("echo \"a b\" \"c\"", output), 0);
    EXPECT_STREQ(output.getValue(), command("a b c\n", "\"a b\" \"c\"\n"));
    EXPECT_EQ(shell_cmd_output(command("head -c 3000000 /dev/zero",
                                       "for /l %i in (1,1,2000) do @echo 0123456789abcdef"),
                               output),
              0);
    EXPECT_EQ(output.getLength(), kit::hasDrives ? 2000 * 17 : 3000000);
}

TEST(Environment, PutReachesChildren) {
    const moxkit::ScopedEnv own("KIT_PUT", nullptr);
    KazString output;
    EXPECT_EQ(TI_putenv("KIT_PUT", "a b=c"), 0);
    EXPECT_STREQ(std::getenv("KIT_PUT"), "a b=c");
    shell_cmd_output(command("echo \"$KIT_PUT\"", "echo %KIT_PUT%"), output);
    EXPECT_STREQ(output.getValue(), "a b=c\n");
    EXPECT_EQ(TI_putenv("KIT_PUT", nullptr), 0); // a host may have no empty variables
    EXPECT_STREQ(std::getenv("KIT_PUT"), command("", nullptr));
    for (const char* name : {static_cast<const char*>(nullptr), "", "A=B"})
        EXPECT_EQ(TI_putenv(name, "x"), -1);
}

} // namespace
