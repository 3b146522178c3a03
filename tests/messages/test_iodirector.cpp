#include "kit/capture.h"
#include "kit/random.h"
#include "logging_director.h"
#include "tools/messages/messages.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Log = std::vector<std::string>;

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

    EXPECT_EQ(KazIODirector::ttyStart("make"), 42);
    EXPECT_EQ(tty_start("make all"), 42);
    KazIODirector::ttyEnd(1);
    tty_end(2);
    EXPECT_EQ(director.takeLog(),
              (Log{"ttyStart make", "ttyStart make all", "ttyEnd 1", "ttyEnd 2"}));

    KazIODirector::ttyMsg(1, "%s-%d", "a", 1);
    tty_msg(2, "%s-%d", "b", 2);
    vCall<int>(KazIODirector::vttyMsg, 3, "%c", 'c');
    vCall<int>(vtty_msg, 4, "%c", 'd');
    EXPECT_EQ(director.takeLog(),
              (Log{"ttyMsg 1 a-1", "ttyMsg 2 b-2", "ttyMsg 3 c", "ttyMsg 4 d"}));

    KazIODirector::printMsg("%d%%", 1);
    print_msg("%d%%", 2);
    vCall<>(KazIODirector::vprintMsg, "%d", 3);
    vCall<>(vprint_msg, "%d", 4);
    EXPECT_EQ(director.takeLog(), (Log{"msg 1%", "msg 2%", "msg 3", "msg 4"}));

    KazIODirector::printError("%d", 1);
    print_err("%d", 2);
    vCall<>(KazIODirector::vprintError, "%d", 3);
    vCall<>(vprint_err, "%d", 4);
    EXPECT_EQ(director.takeLog(), (Log{"error 1", "error 2", "error 3", "error 4"}));

    KazIODirector::fatalError("%d", 1);
    fatal_err("%d", 2);
    vCall<>(KazIODirector::vfatalError, "%d", 3);
    vCall<>(vfatal_err, "%d", 4);
    kazInternalError(4000000000u);
    EXPECT_EQ(director.takeLog(), (Log{"fatal 1", "fatal 2", "fatal 3", "fatal 4",
                                       "fatal Internal error #4000000000"}));

    vCall<gu_set*>(KazIODirector::vprintSymMsg, setOf(5), "%d", 1);
    vCall<gu_set*>(KazIODirector::vprintSymError, setOf(6), "%d", 2);
    print_sym_msg(setOf(7), "%d", 3);
    print_sym_err(setOf(8), "%d", 4);
    print_single_sym_msg(-3, "%d", 5);
    print_single_sym_err(32767, "%d", 6);
    EXPECT_EQ(director.takeLog(),
              (Log{"symMsg {5;} 1", "symError {6;} 2", "symMsg {7;} 3", "symError {8;} 4",
                   "symMsg {-3;} 5", "symError {32767;} 6"}));

    EXPECT_EQ(KazIODirector::confirm("t", "m", KazIODirector::YesNo, KazIODirector::Decline),
              KazIODirector::Ignore);
    KazString answer;
    EXPECT_TRUE(KazIODirector::getUserInput(answer, "t", "p", false));
    EXPECT_STREQ(answer.getValue(), "answer");
    EXPECT_EQ(director.takeLog(), (Log{"confirm t,m,3,1", "input t,p,0"}));

    EXPECT_EQ(KazIODirector::progressStart("copy", 9), 77);
    KazIODirector::progressIncrement(1, 2.5, true);
    KazIODirector::progressMsg(1, 2, "%s", "file");
    KazIODirector::progressEnd(3);
    KazIODirector::reset(4);
    EXPECT_TRUE(KazIODirector::cancelPending(5));
    KazIODirector::addCallback(1, 2);
    KazIODirector::removeCallback(3, 4);
    KazIODirector::notify(5);
    EXPECT_EQ(director.takeLog(),
              (Log{"progressStart copy,9", "progressIncrement 1,2.5,1", "progressMsg 1,2 file",
                   "progressEnd 3", "reset 4", "isCancelPending 5", "addCallback 1,2",
                   "removeCallback 3,4", "notify 5"}));
}

TEST(Director, BothNamesAreOneFunction) {
    EXPECT_EQ(&print_msg, &KazIODirector::printMsg);
    EXPECT_EQ(&print_err, &KazIODirector::printError);
    EXPECT_EQ(&fatal_err, &KazIODirector::fatalError);
    EXPECT_EQ(&tty_msg, &KazIODirector::ttyMsg);
}

TEST(Director, FallenBackItShowsEverythingOnTheConsole) {
    removeConsoleDirector();
    LoggingDirector director;
    director.install();
    director.giveUp();
    EXPECT_EQ(KazIODirector::getInstance(), &director);

    kit::ScopedInput input("no\nline\n");
    kit::Capture capture;
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

TEST(Director, TheStackOfDirectors) {
    LoggingDirector first;
    LoggingDirector second;
    first.install();
    second.install();
    EXPECT_EQ(KazIODirector::getInstance(), &second);
    second.giveUp();
    EXPECT_EQ(KazIODirector::getInstance(), &first);
    print_msg("heard");
    EXPECT_EQ(first.takeLog(), Log{"msg heard"});

    first.final = 1;
    LoggingDirector refused;
    refused.install();
    EXPECT_EQ(KazIODirector::getInstance(), &first);
    first.final = 0;
    second.install();
    refused.giveUp(); // to the one that had refused it
    EXPECT_EQ(KazIODirector::getInstance(), &first);
}

TEST(Director, OneThatGoesIsNotFallenBackTo) {
    removeConsoleDirector();
    auto first = std::make_unique<LoggingDirector>();
    auto second = std::make_unique<LoggingDirector>();
    auto third = std::make_unique<LoggingDirector>();
    auto apart = std::make_unique<LoggingDirector>();
    first->install();
    second->install();
    second->final = 1;
    apart->install();
    second->final = 0;
    third->install();
    second.reset();
    third->giveUp();
    EXPECT_EQ(KazIODirector::getInstance(), first.get());
    apart->giveUp();
    EXPECT_EQ(KazIODirector::getInstance(), first.get());
    third->install();
    third->install(); // is its own predecessor now
    third.reset();
    apart.reset();
    first.reset();

    kit::Capture capture;
    print_msg("console");
    EXPECT_EQ(capture.out(), "console\n");
}

TEST(Console, ANewlineFollowsUnlessTheFormatEndsInOne) {
    const char* empty = "";
    const char* none = nullptr;
    kit::Capture capture;
    print_msg("done\n");
    print_msg("done");
    print_msg("%s", "done\n");
    print_msg(empty, 0);
    print_msg(none, 0);
    tty_msg(0, "tty");
    print_sym_msg(nullptr, "symbols\n");
    EXPECT_EQ(capture.out(), "done\ndone\ndone\n\n\n\ntty\nsymbols\n");
    print_err("%s%c", "bad", '\n');
    print_err("bad\n");
    print_sym_err(nullptr, "bad");
    EXPECT_EQ(capture.err(), "bad\n\nbad\nbad\n");
    EXPECT_EQ(tty_start(nullptr), 0);
    tty_end(17);
    EXPECT_EQ(capture.out(),
              "done\ndone\ndone\n\n\n\ntty\nsymbols\nExecuting: \nExecution Complete.\n");
}

TEST(ConsoleDeathTest, AFatalErrorEndsTheProcessWithStatus1) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(fatal_err("no %s", "memory"), testing::ExitedWithCode(1), "^no memory\n$");
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

/// The choice list as a user would describe it: the answers, and which of them
/// is marked for the default replies Accept, Decline and any other.
struct Dialog {
    std::vector<std::string> answers;
    int marked[3];
};

const Dialog dialogs[] = {
    {{"Ok"}, {0, 0, 0}},
    {{"Ok", "Cancel"}, {0, 1, 1}},
    {{"Retry", "Cancel"}, {0, 1, 1}},
    {{"Yes", "No"}, {0, 1, 1}},
    {{"Yes", "No", "Cancel"}, {0, 1, 2}},
    {{"Abort", "Retry", "Ignore"}, {1, 0, 2}},
};

std::string choices(int type, int defaultReply) {
    if (type < 0 || type > 5)
        return "";
    const Dialog& dialog = dialogs[type];
    const int marked = dialog.marked[defaultReply == 0 || defaultReply == 1 ? defaultReply : 2];
    std::string list;
    for (int i = 0; i < static_cast<int>(dialog.answers.size()); ++i)
        list +=
            (i > 0 ? "/" : "") + (i == marked ? "[" + dialog.answers[i] + "]" : dialog.answers[i]);
    return list;
}

int replyTo(const std::string& input, int defaultReply) {
    switch (input.empty() ? '\n' : input[0]) {
    case 'o':
    case 'O':
    case 'y':
    case 'Y':
    case 'r':
    case 'R':
        return 0;
    case 'c':
    case 'C':
    case 'n':
    case 'N':
    case 'a':
    case 'A':
        return 1;
    case 'i':
    case 'I':
        return 2;
    default:
        return defaultReply;
    }
}

void expectConfirmation(int type, int defaultReply, const std::string& text) {
    kit::ScopedInput input(text);
    kit::Capture capture;
    EXPECT_EQ(KazIODirector::confirm("Save", "Discard %d?",
                                     static_cast<KazIODirector::DialogType>(type),
                                     static_cast<KazIODirector::Reply>(defaultReply)),
              replyTo(text, defaultReply))
        << type << " " << defaultReply << " " << text;
    EXPECT_EQ(capture.out(), "Save: Discard %d? " + choices(type, defaultReply) + " ");
}

TEST(Console, ConfirmOffersMarksAndReadsTheAnswers) {
    for (int type : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 1000})
        for (int defaultReply : {-1, 0, 1, 2, 3})
            for (const char* text : {"", "\n", "\r\n", "cancel\n", "Yes please\n", "x\n", " y\n"})
                expectConfirmation(type, defaultReply, text);
    for (int c = 1; c < 256; ++c)
        expectConfirmation(KazIODirector::YesNo, 2, std::string(1, static_cast<char>(c)) + "\n");
}

/// What the console makes of the next line of @p input; false at its end.
bool nextLine(std::string& input, std::string& line) {
    if (input.empty())
        return false;
    const std::size_t end = input.find('\n');
    line = input.substr(0, end);
    if (line.size() <= 255 && end != std::string::npos && line.ends_with('\r'))
        line.pop_back();
    line = line.substr(0, 255).c_str();
    input = end == std::string::npos ? "" : input.substr(end + 1);
    return true;
}

TEST(Console, UserInputIsOneLineAndKeepsTheResultWithoutOne) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int round = 0; round < 200; ++round) {
        std::string text;
        for (int n = random.below(6); n > 0; --n) {
            const std::string start = random.text(3, "ab \r");
            text += start + std::string(random.oneIn(2) ? random.between(248, 262) : 0, 'x') +
                    random.text(2, std::string("y\r\0", 3)) + (random.oneIn(3) ? "\r\n" : "\n");
        }
        text += random.oneIn(2) ? random.text(300, "z") : "";

        kit::ScopedInput input(text);
        kit::Capture capture;
        std::string prompts;
        std::string line;
        for (int reads = 0; reads < 9; ++reads) {
            const bool echo = random.oneIn(2);
            KazString result("before");
            const bool expected = nextLine(text, line) && !line.empty();
            EXPECT_EQ(KazIODirector::getUserInput(result, "Login", "100%s", echo), expected);
            EXPECT_STREQ(result.getValue(), expected ? line.c_str() : "before");
            prompts += echo ? "Login: 100%s: " : "Login: 100%s: \n";
        }
        EXPECT_EQ(capture.out(), prompts);
    }
}

} // namespace
