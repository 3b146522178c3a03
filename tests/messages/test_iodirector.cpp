// SPDX-License-Identifier: Apache-2.0
#include "logging_director.h"
#include "testkit/capture.h"
#include "tools/messages/messages.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

/// Calls one of the forms that take a va_list; @p leading comes before the format.
template <typename... Leading>
void vCall(void (*entry)(Leading..., const char*, va_list), Leading... leading, const char* format,
           ...) {
    va_list args;
    va_start(args, format);
    entry(leading..., format, args);
    va_end(args);
}

gu_set* setOf(std::intptr_t element) {
    gu_set* const set = gu_set_create(0);
    gu_set_add(set, reinterpret_cast<void*>(element));
    return set;
}

TEST(Director, EveryEntryPointReachesTheInstalledOne) {
    LoggingDirector director;
    director.install();
    print_msg("%d%%", 1);
    vCall<>(vprint_msg, "%d", 2);
    KazIODirector::printError("%d", 3);
    vCall<>(vprint_err, "%d", 4);
    KazIODirector::fatalError("%d", 5);
    vCall<>(vfatal_err, "%d", 6);
    kazInternalError(4000000000u);
    print_sym_msg(setOf(7), "%d", 7);
    print_sym_err(setOf(8), "%d", 8);
    print_single_sym_msg(-3, "%d", 9);
    print_single_sym_err(32767, "%d", 10);
    vCall<int>(vtty_msg, 4, "%c", 'b');
    KazIODirector::addCallback(1, 2);
    KazIODirector::removeCallback(3, 4);
    KazIODirector::notify(5);
    EXPECT_EQ(director.takeLog(), (Log{"msg 1%", "msg 2", "error 3", "error 4", "fatal 5",
                                       "fatal 6", "fatal Internal error #4000000000", "symMsg 7 7",
                                       "symError 8 8", "symMsg -3 9", "symError 32767 10", "msg b",
                                       "addCallback 1,2", "removeCallback 3,4", "notify 5"}));
}

TEST(Director, FallenBackItShowsEverythingOnTheConsole) {
    removeConsoleDirector();
    LoggingDirector director;
    director.install();
    director.giveUp();
    EXPECT_EQ(KazIODirector::getInstance(), &director);

    moxkit::ScopedInput input("no\nline\n");
    moxkit::Capture capture;
    EXPECT_EQ(tty_start("make"), 0);
    tty_end(0);
    print_msg("message");
    print_err("error");
    EXPECT_EQ(KazIODirector::confirm("t", "m", KazIODirector::YesNo, KazIODirector::Accept),
              KazIODirector::Decline);
    KazString answer;
    EXPECT_TRUE(KazIODirector::getUserInput(answer, "t", "p", true));
    EXPECT_STREQ(answer.getValue(), "line");
    EXPECT_EQ(KazIODirector::progressStart("copy", 9), 1);
    KazIODirector::progressIncrement(1, 10, false);
    KazIODirector::progressMsg(1, 0, "%d", 5);
    KazIODirector::progressEnd(1);
    KazIODirector::reset(1);
    EXPECT_FALSE(KazIODirector::cancelPending(1));
    KazIODirector::addCallback(1, 2);
    KazIODirector::removeCallback(1, 2);
    KazIODirector::notify(1);
    EXPECT_EQ(capture.out(), "Executing: make\nExecution Complete.\nmessage\n"
                             "t: m [Yes]/No t: p: copy ..\n5");
    EXPECT_EQ(capture.err(), "error\n");
    EXPECT_EQ(director.takeLog(), Log{});

    // The console passes these on to its other operations, wherever they are.
    tty_msg(3, "%d", 1);
    print_sym_msg(nullptr, "%d", 2);
    print_sym_err(nullptr, "%d", 3);
    EXPECT_EQ(director.takeLog(), (Log{"msg 1", "msg 2", "error 3"}));
}

TEST(Director, EachFallsBackToTheOneBeforeThatIsStillThere) {
    removeConsoleDirector();
    auto first = std::make_unique<LoggingDirector>();
    auto second = std::make_unique<LoggingDirector>();
    auto third = std::make_unique<LoggingDirector>();
    auto refused = std::make_unique<LoggingDirector>();
    first->install();
    second->install();
    second->final = 1;
    refused->install();
    EXPECT_EQ(KazIODirector::getInstance(), second.get());
    second->final = 0;
    third->install();
    refused->giveUp(); // to the one that had refused it
    EXPECT_EQ(KazIODirector::getInstance(), second.get());
    third->install();
    second.reset();
    third->giveUp();
    EXPECT_EQ(KazIODirector::getInstance(), first.get());
    third->install();
    third->install(); // is its own predecessor now
    third.reset();
    refused.reset();
    first.reset();
    moxkit::Capture capture;
    print_msg("console");
    EXPECT_EQ(capture.out(), "console\n");
}

TEST(Console, ANewlineFollowsUnlessTheFormatEndsInOne) {
    const char* empty = "";
    const char* none = nullptr;
    moxkit::Capture capture;
    print_msg("done\n");
    print_msg("done");
    print_msg("%s", "done\n");
    print_msg(empty, 0);
    print_msg(none, 0);
    tty_msg(0, "tty");
    EXPECT_EQ(tty_start(nullptr), 0);
    print_err("%s%c", "bad", '\n');
    EXPECT_EQ(capture.out(), "done\ndone\ndone\n\n\n\ntty\nExecuting: \n");
    EXPECT_EQ(capture.err(), "bad\n\n");
}

TEST(ConsoleDeathTest, AFatalErrorEndsTheProcessWithStatus1) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(kazInternalError(5), testing::ExitedWithCode(1), "^Internal error #5\n$");
    const auto fallenBack = [] {
        removeConsoleDirector();
        static LoggingDirector director;
        director.install();
        director.giveUp();
        fatal_err("gone\n");
    };
    EXPECT_EXIT(fallenBack(), testing::ExitedWithCode(1), "^gone\n$");
}

void expectConfirmation(int type, int defaultReply, const std::string& list,
                        const std::string& text, int reply) {
    moxkit::ScopedInput input(text);
    moxkit::Capture capture;
    EXPECT_EQ(KazIODirector::confirm("Save", "Discard %d?",
                                     static_cast<KazIODirector::DialogType>(type),
                                     static_cast<KazIODirector::Reply>(defaultReply)),
              reply)
        << text;
    EXPECT_EQ(capture.out(), "Save: Discard %d? " + list + " ");
}

TEST(Console, ConfirmOffersMarksAndReadsTheAnswers) {
    // For the default replies Accept, Decline and any other.
    const char* const choices[][3] = {
        {"[Ok]", "[Ok]", "[Ok]"},
        {"[Ok]/Cancel", "Ok/[Cancel]", "Ok/[Cancel]"},
        {"[Retry]/Cancel", "Retry/[Cancel]", "Retry/[Cancel]"},
        {"[Yes]/No", "Yes/[No]", "Yes/[No]"},
        {"[Yes]/No/Cancel", "Yes/[No]/Cancel", "Yes/No/[Cancel]"},
        {"Abort/[Retry]/Ignore", "[Abort]/Retry/Ignore", "Abort/Retry/[Ignore]"},
    };
    for (int type = 0; type < 6; ++type)
        for (int column = 0; column < 3; ++column)
            expectConfirmation(type, column, choices[type][column], "\r\n", column);
    for (int type : {-1, 6, 1000})
        expectConfirmation(type, 1, "", "", 1);
    expectConfirmation(3, -1, "Yes/[No]", " y\n", -1);
    const std::string letters[] = {"oOyYrR", "cCnNaA", "iI"};
    for (int c = 1; c < 256; ++c) {
        int reply = 0;
        while (reply < 3 && letters[reply].find(static_cast<char>(c)) == std::string::npos)
            ++reply;
        expectConfirmation(4, 3, "Yes/No/[Cancel]", std::string(1, static_cast<char>(c)) + " now\n",
                           c == '\n' ? 3 : reply);
    }
}

TEST(Console, UserInputIsOneLineAndKeepsTheResultWithoutOne) {
    const std::string full(255, 'x');
    const std::pair<std::string, const char*> lines[] = {
        {"mary ann\n", "mary ann"},
        {"\n", nullptr},
        {"mary\r\n", "mary"},
        {"\r\n", nullptr},
        {full + "\n", full.c_str()},
        {full + "\r\n", full.c_str()},
        {full + "y and more\n", full.c_str()},
        {std::string("a\0b\n", 4), "a"},
        {"\ry\r", "\ry\r"},
        {"", nullptr},
    };
    std::string typed, prompts;
    for (const auto& [line, answer] : lines)
        typed += line;
    moxkit::ScopedInput input(typed);
    moxkit::Capture capture;
    bool echo = false;
    for (const auto& [line, answer] : lines) {
        KazString result("before");
        EXPECT_EQ(KazIODirector::getUserInput(result, "Login", "100%s", echo), answer != nullptr);
        EXPECT_STREQ(result.getValue(), answer != nullptr ? answer : "before");
        prompts += echo ? "Login: 100%s: " : "Login: 100%s: \n";
        echo = !echo;
    }
    EXPECT_EQ(capture.out(), prompts);
}

} // namespace
