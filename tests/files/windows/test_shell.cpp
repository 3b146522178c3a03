// Child processes of the command interpreter, and what reaches them.
#include "tools/files/process.h"

#include "kit/capture.h"
#include "kit/env.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Shell, ShowsOutputBetweenStartAndEnd) {
    kit::Capture capture;
    int signal = -1;
    EXPECT_EQ(shell_cmd("echo one %%s& echo err>&2& exit 3", &signal), 3);
    EXPECT_EQ(signal, 0);
    EXPECT_EQ(capture.out(), "Executing: echo one %%s& echo err>&2& exit 3\n"
                             "one %%s\nerr\nExecution Complete.\n");
    EXPECT_EQ(capture.err(), "");
}

TEST(Shell, StatusAndOutput) {
    KazString output("before");
    int signal = -1;
    EXPECT_EQ(shell_cmd_output("echo x& exit 255", output, &signal), 255);
    EXPECT_STREQ(output.getValue(), "x\n");
    EXPECT_EQ(signal, 0);
    EXPECT_NE(shell_cmd_output("no-such-program-here 2>NUL", output), 0);
    EXPECT_EQ(shell_cmd_output("rem", output), 0);
    EXPECT_TRUE(output.isEmpty());
    EXPECT_EQ(shell_cmd_output("echo \"a b\" \"c\"", output), 0);
    EXPECT_STREQ(output.getValue(), "\"a b\" \"c\"\n");
    EXPECT_EQ(shell_cmd_output("for /l %i in (1,1,2000) do @echo 0123456789abcdef", output), 0);
    EXPECT_EQ(output.getLength(), 2000 * 17);
}

TEST(Environment, PutReachesChildren) {
    const kit::ScopedEnv own("KIT_PUT", nullptr);
    KazString output;
    EXPECT_EQ(TI_putenv("KIT_PUT", "a b=c"), 0);
    EXPECT_STREQ(std::getenv("KIT_PUT"), "a b=c");
    shell_cmd_output("echo %KIT_PUT%", output);
    EXPECT_STREQ(output.getValue(), "a b=c\n");
    EXPECT_EQ(TI_putenv("KIT_PUT", nullptr), 0);
    EXPECT_EQ(std::getenv("KIT_PUT"), nullptr) << "there are no empty variables here";
    EXPECT_EQ(TI_putenv(nullptr, "x"), -1);
    EXPECT_EQ(TI_putenv("", "x"), -1);
    EXPECT_EQ(TI_putenv("A=B", "x"), -1);
}

} // namespace
