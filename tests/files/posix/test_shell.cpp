// Child processes of a POSIX shell, and what reaches them.
#include "tools/files/process.h"

#include "files/words.h"
#include "kit/capture.h"
#include "kit/env.h"
#include "kit/random.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/time.h>

namespace {

using words::join;
using words::split;
using words::Words;

TEST(Words, ReadAsAShellDoes) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    std::string script;
    std::string expected;
    for (int round = 0; round < 200; ++round) {
        Words words;
        for (int n = random.between(1, 4); n > 0; --n)
            words.push_back(random.text(6, "a \"'\\$`*;&|~#!"));
        script += "printf '<%s>' " + join(words) + "\n";
        for (const std::string& word : words)
            expected += "<" + word + ">";
    }
    KazString output;
    ASSERT_EQ(shell_cmd_output(script.c_str(), output), 0);
    EXPECT_EQ(output.getValue(), expected);
    EXPECT_EQ(split(R"( a\ b 'c "d\' "e 'f\"\x" g''h "" )"),
              (Words{"a b", R"(c "d\)", R"(e 'f"\x)", "gh", ""}));
}

TEST(Shell, ShowsOutputBetweenStartAndEnd) {
    kit::Capture capture;
    int signal = -1;
    EXPECT_EQ(shell_cmd("printf 'one %%s\\ntwo'; echo err >&2; exit 3", &signal), 3);
    EXPECT_EQ(signal, 0);
    EXPECT_EQ(capture.out(), "Executing: printf 'one %%s\\ntwo'; echo err >&2; exit 3\n"
                             "one %s\ntwoerr\nExecution Complete.\n");
    EXPECT_EQ(capture.err(), "");
}

TEST(Shell, StatusSignalAndOutput) {
    KazString output("before");
    int signal = -1;
    EXPECT_EQ(shell_cmd_output("printf 'a\\0b\\n'; exit 255", output, &signal), 255);
    EXPECT_EQ(std::string(output.getValue(), 4), std::string("a\0b\n", 4));
    EXPECT_EQ(output.getLength(), 4);
    EXPECT_EQ(signal, 0);
    EXPECT_EQ(shell_cmd_output("printf x; kill -9 $$", output, &signal), -1);
    EXPECT_EQ(signal, SIGKILL);
    EXPECT_STREQ(output.getValue(), "x");
    EXPECT_EQ(shell_cmd_output("no-such-program-here 2>/dev/null", output), 127);
    EXPECT_EQ(shell_cmd_output("", output), 0);
    EXPECT_TRUE(output.isEmpty());
    EXPECT_EQ(shell_cmd_output("head -c 3000000 /dev/zero", output), 0);
    EXPECT_EQ(output.getLength(), 3000000);
}

/// The end of the child counts, not that of whatever it left running.
TEST(Shell, DoesNotWaitForTheBackground) {
    KazString output;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(shell_cmd_output("sleep 20 & echo $!", output), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    const int background = std::atoi(output.getValue());
    ASSERT_GT(background, 0);
    ::kill(background, SIGKILL);
}

TEST(Shell, SurvivesInterruptedCalls) {
    struct sigaction old, tick{};
    tick.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &tick, &old);
    const itimerval often{{0, 500}, {0, 500}};
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    KazString output;
    const int status = shell_cmd_output("sleep 0.2; printf done; exec >&- 2>&-; sleep 0.1", output);
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &old, nullptr);
    EXPECT_EQ(status, 0);
    EXPECT_STREQ(output.getValue(), "done");
}

TEST(Environment, PutReachesChildren) {
    const kit::ScopedEnv own("KIT_PUT", nullptr);
    KazString output;
    EXPECT_EQ(TI_putenv("KIT_PUT", "a b=c"), 0);
    EXPECT_STREQ(std::getenv("KIT_PUT"), "a b=c");
    shell_cmd_output("printf %s \"$KIT_PUT\"", output);
    EXPECT_STREQ(output.getValue(), "a b=c");
    EXPECT_EQ(TI_putenv("KIT_PUT", nullptr), 0);
    EXPECT_STREQ(std::getenv("KIT_PUT"), "");
    EXPECT_EQ(TI_putenv(nullptr, "x"), -1);
    EXPECT_EQ(TI_putenv("", "x"), -1);
    EXPECT_EQ(TI_putenv("A=B", "x"), -1);
}

} // namespace
