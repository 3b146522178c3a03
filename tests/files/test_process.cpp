// Process helpers: words of a command line, child processes, environment.
#include "tools/files/process.h"

#include "kit/capture.h"
#include "kit/director.h"
#include "kit/env.h"
#include "kit/random.h"
#include "tools/app/KazEditorsBase.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/time.h>
#include <vector>

namespace {

using Words = std::vector<std::string>;

Words split(const std::string& line) {
    char** argv = nullptr;
    const int argc = str_to_argv(line.c_str(), &argv);
    EXPECT_GE(argc, 0) << line;
    Words words(argv, argv + argc);
    EXPECT_EQ(argv[argc], nullptr);
    std::free(argv);
    return words;
}

std::string join(const Words& words) {
    std::vector<const char*> argv;
    for (const std::string& word : words)
        argv.push_back(word.c_str());
    return argv_to_str(static_cast<int>(argv.size()), argv.data()).getValue();
}

TEST(Words, JoinAndSplitAreInverse) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int round = 0; round < 3000; ++round) {
        Words words;
        for (int n = random.below(5); n > 0; --n)
            words.push_back(random.text(8, "ab \t\n\"'\\$`*?;&|<>()[]{}~#!%=-\xe9\x01"));
        ASSERT_EQ(split(join(words)), words) << join(words);
    }
}

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

TEST(Words, NothingAndTheUnclosed) {
    char** argv = nullptr;
    EXPECT_EQ(str_to_argv(nullptr, &argv), 0);
    EXPECT_EQ(argv[0], nullptr);
    std::free(argv);
    EXPECT_TRUE(split(" \t\n").empty());
    for (const char* unclosed : {"'", "a \"b", "\"\\\"", "x 'y\\"}) {
        EXPECT_EQ(str_to_argv(unclosed, &argv), -1) << unclosed;
        EXPECT_EQ(argv, nullptr);
    }
    EXPECT_TRUE(argv_to_str(3, nullptr).isEmpty());
    const char* early[] = {"a", nullptr, "b"};
    EXPECT_STREQ(argv_to_str(3, early).getValue(), "a");
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

class Editors : public KazEditorsBase {
public:
    KazString getCreationCommand(const char* name) override {
        return KazString("'C:\\my tools\\") + name + "' -editor x";
    }
};

TEST(Environment, ProgramNameOfAnEditor) {
    {
        const Editors editors; // before there is a plain object, which nobody would own then
        EXPECT_STREQ(TI_cprogname("cde"), "cde");
    }
    EXPECT_STREQ(TI_cprogname("class editor"), "class editor");
    EXPECT_STREQ(TI_cprogname("../../bin/x"), "x");
    EXPECT_STREQ(TI_cprogname(nullptr), "");
}

} // namespace
