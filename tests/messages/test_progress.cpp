#include "kit/alloc_failure.h"
#include "kit/capture.h"
#include "logging_director.h"
#include "tools/messages/KazConsoleProgress.h"
#include "tools/messages/KazMsgProgressHandle.h"
#include "tools/messages/KazNGProgress.h"
#include "tools/messages/KazProgressRange.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <sstream>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

enum Operation { begin, push, change, pop, set, setAll, add, addAll };

/// An operation, what it gives, and what the progress says after it.
struct Step {
    Operation operation;
    double value, result, overall, percent, low, high;
};

double apply(const Step& step, KazProgress& progress) {
    if (step.operation == set || step.operation == setAll)
        return progress.set(step.value, step.operation == setAll);
    if (step.operation == add || step.operation == addAll)
        return progress.increment(step.value, step.operation == addAll);
    if (step.operation == begin)
        progress.initialize(step.value != 0);
    else if (step.operation == pop)
        progress.popRange();
    else
        step.operation == push ? progress.pushRange(step.value) : progress.setRange(step.value);
    return 0;
}

const Step steps[] = {
    {pop, 0, 0, 0, 0, 0, 100}, // nothing to close
    {begin, 0, 0, 0, 0, 0, 100},
    {push, 40, 0, 0, 0, 0, 16},
    {set, 50, 20, 20, 50, 0, 16},
    {set, 40, 50, 20, 50, 0, 16}, // no way back
    {add, 10, 24, 24, 60, 0, 16},
    {add, -1, 40, 40, 100, 0, 16},
    {set, 7, 100, 40, 100, 0, 16}, // complete
    {pop, 0, 0, 40, 0, 0, 100},
    {set, 30, 0, 40, 0, 0, 100}, // below what has been reached
    {push, 50, 0, 40, 0, 20, 45},
    {push, 50, 0, 40, 0, 10, 16.25},
    {set, 80, 60, 60, 80, 10, 16.25},
    {pop, 0, 0, 60, 0, 20, 45},
    {change, 25, 0, 60, 0, 15, 21.25},
    {pop, 0, 0, 60, 0, 0, 100},
    {set, 80, 80, 80, 80, 0, 100},
    {setAll, 25, 25, 25, 80, 0, 100},
    {set, 79, 80, 25, 80, 0, 100}, // no way back here either
    {setAll, 80, 80, 80, 80, 0, 100},
    {push, 50, 0, 80, 0, 40, 65},
    {set, nan, 130, 130, 100, 40, 65}, // only the outermost is cut at 100
    {setAll, 25, 25, 25, 100, 40, 65},
    {addAll, 5, 30, 30, 100, 40, 65},
    {addAll, 150, 100, 100, 100, 40, 65},
    {begin, 1, 0, 0, 0, 0, 100},
    {pop, 0, 0, 0, 0, 0, 100},
    {setAll, 50.9, 50, 50, 0, 0, 100},
    {push, 80, 0, 50, 0, 40, 80},
    {set, 90, 100, 100, 100, 40, 80},
    {begin, 1, 0, 0, 0, 0, 100},
    {pop, 0, 0, 0, 0, 0, 100},
    {set, 33.9, 33, 33, 33.9, 0, 100}, // opens a range
    {add, 0.6, 34, 34, 34.5, 0, 100},
    {pop, 0, 0, 34, 0, 0, 100},
    {add, 10, 44, 44, 44, 34, 100},
    {change, -3, 0, 44, 0, 44, 100},
    {set, 150, 100, 100, 100, 44, 100},
};

void expectState(const KazProgress& progress, const Step& step) {
    double low, high;
    EXPECT_TRUE(progress.getRange(low, high, false));
    EXPECT_DOUBLE_EQ(low, step.low);
    EXPECT_DOUBLE_EQ(high, step.high);
    EXPECT_TRUE(progress.getRange(low, high, true) && low == 0 && high == 100);
    EXPECT_DOUBLE_EQ(progress.get(false), step.percent);
    EXPECT_EQ(progress.get(true), step.overall);
}

TEST(Progress, StepsAddUpToTheWholeAndCopiesGoTheirOwnWay) {
    KazNGProgress progress;
    Step before = steps[0];
    for (const Step& step : steps) {
        SCOPED_TRACE(&step - steps);
        KazNGProgress copy(progress);
        EXPECT_DOUBLE_EQ(apply(step, copy), step.result);
        expectState(copy, step);
        expectState(progress, before);
        progress = copy;
        before = step;
        const KazNGProgress& self = progress;
        progress = self;
    }
    EXPECT_TRUE(progress == progress && KazNGProgress(progress) != progress);
    std::ostringstream text;
    progress.print(text);
    EXPECT_EQ(text.str(), "KazProgress\n");
}

TEST(Progress, RangesCompareByTheirFields) {
    for (const auto field :
         {&KazProgressRange::start, &KazProgressRange::end, &KazProgressRange::share,
          &KazProgressRange::percent, &KazProgressRange::scale}) {
        KazProgressRange changed;
        changed.*field += 1;
        EXPECT_TRUE(changed != KazProgressRange() && KazProgressRange() != changed);
        changed.*field = nan;
        EXPECT_TRUE(KazProgressRange(changed) == changed);
    }
}

/// Closes its ranges as soon as it hears of progress.
class ClosingProgress : public KazProgress {
    unsigned int setProgress(unsigned int value) override {
        popRange();
        popRange();
        return value;
    }
    unsigned int getProgress() const override { return 0; }
};

TEST(Progress, ARangeMayCloseWhileItsValueIsStored) {
    ClosingProgress progress;
    progress.initialize(false);
    progress.pushRange(50);
    EXPECT_EQ(progress.set(40, false), 20);
    EXPECT_EQ(progress.get(false), 0);
}

TEST(Progress, SurvivesEveryFailedAllocation) {
    KazNGProgress progress, target;
    progress.initialize(false);
    int depth = 0;
    kit::sweepAllocations(
        [&] {
            for (; depth < 60; ++depth)
                progress.pushRange(100);
            target = progress;
        },
        [&] {
            const double reached = progress.increment(1, false);
            EXPECT_EQ(reached, progress.get(true));
        });
    EXPECT_EQ(target.get(true), progress.get(true));
}

TEST(ConsoleProgress, ADotForEveryFivePercent) {
    KazConsoleProgress progress;
    kit::Capture capture;
    double before = 0;
    for (int value : {3, 27, 27, 29, 30, 99, 100}) {
        EXPECT_EQ(progress.set(value, true), before);
        EXPECT_EQ(capture.out(), std::string(value / 5, '.'));
        before = value;
    }
}

TEST(DirectorProgress, NumbersCountAndDotsFollowTheTitle) {
    removeConsoleDirector();
    kit::Capture capture;
    EXPECT_EQ(KazIODirector::progressStart("Copying 100%d", 7), 1);
    KazIODirector::progressIncrement(1, 12, false);
    KazIODirector::progressMsg(1, 3, "at %s", "x");
    EXPECT_EQ(KazIODirector::progressStart(KazString(), 0), 2);
    KazIODirector::progressIncrement(2, 10, true);
    KazIODirector::progressIncrement(1, 8, false);
    KazIODirector::progressEnd(1);
    for (int unknown : {1, 0, -1, 3}) {
        KazIODirector::progressIncrement(unknown, 50, false);
        KazIODirector::progressEnd(unknown);
        KazIODirector::reset(unknown);
    }
    KazIODirector::progressIncrement(2, 5, true);
    EXPECT_EQ(KazIODirector::progressStart("c", 0), 3);
    EXPECT_EQ(capture.out(), "Copying 100%d ..\nat x .....c ");
}

TEST(DirectorProgress, AStartThatFailsLeavesNothingBehind) {
    removeConsoleDirector();
    KazIODirector::getInstance();
    kit::Capture capture;
    const KazString title("copy");
    int started = 0;
    EXPECT_GT(kit::sweepAllocations([&] { started = KazIODirector::progressStart(title, 0); },
                                    [&] { EXPECT_EQ(started, 0); }),
              1);
    const std::string before = capture.out();
    KazIODirector::progressIncrement(started, 10, false);
    EXPECT_EQ(capture.out(), before + "..");
}

TEST(ProgressHandle, SpeaksToTheDirectorUnderItsNumber) {
    LoggingDirector director;
    director.install();
    {
        KazProgressHandle handle("work", 4);
        handle.increment(1.5, true);
        handle.msg(2, "%s %d", "file", 3);
        handle.startSubProgress(30, 5);
        handle.endSubProgress();
        handle.reset();
        EXPECT_TRUE(handle.cancelPending()); // nothing comes of it without a handler
        const KazProgressHandle copy(handle);
    }
    EXPECT_EQ(director.takeLog(), (Log{"start work,4", "increment 77,1.5,1",
                                       "progressMsg 77,2 file 3", "startSub 77,30,5", "endSub 77",
                                       "reset 77", "isCancelPending 77", "end 77", "end 77"}));
}

TEST(MsgProgressHandle, ShowsTheMessageAgainAsAFormatWithoutArguments) {
    const std::string longText(3000, 'x');
    kit::Capture capture;
    KazMsgProgressHandle handle("work", 0);
    handle.msg(1, "%s", "line\n");
    handle.msg(1, "%s", "50%% of %s %n %5.2f %%%");
    handle.msg(1, "%s", longText.c_str());
    EXPECT_EQ(capture.out(), "work \nline\nline\n"
                             "\n50%% of %s %n %5.2f %%%50% of %s %n %5.2f %%\n"
                             "\n" +
                                 longText + longText.substr(0, 2047) + "\n");
}

TEST(ProgressChannel, IsReadAsItWasWritten) {
    kit::Capture quiet;
    removeConsoleDirector();
    KazProgressHandle handle("work", 0);
    for (int a : {0, 40, -5, INT_MAX, INT_MIN})
        for (int b : {0, 2, -1, INT_MAX}) {
            const std::string value =
                "1:" + std::to_string(a) + (b != 0 ? ":" + std::to_string(b) : "");
            EXPECT_EQ(handle.asCmdLine(a, b).getValue(), " -progress_channel " + value);
            int read[3] = {-9, -9, -9};
            EXPECT_TRUE(KazProgressHandle::parseChannel(value.c_str(), read[0], read[1], read[2]));
            EXPECT_TRUE(read[0] == 1 && read[1] == a && read[2] == b) << value;
        }
    int untouched = 9;
    for (const char* bad : {"", "5", "5:", ":7", "5:7:", "5:7:2:", "5:7:2:1", "5:7x", " 5:7",
                            "5 :7", "99999999999:1", "5::2", static_cast<const char*>(nullptr)})
        EXPECT_FALSE(KazProgressHandle::parseChannel(bad, untouched, untouched, untouched)) << bad;
    EXPECT_EQ(untouched, 9);
}

TEST(CancellationDeathTest, RunsTheHandlerOnceAndEndsWithStatus9) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    static KazProgressHandle* cancelling = nullptr;
    const auto cancelled = [](bool withHandler, void (*action)()) {
        static LoggingDirector director;
        director.install();
        KazMsgProgressHandle handle("work", 0);
        cancelling = &handle;
        if (withHandler)
            handle.setCancelHandler([] {
                std::fputs("cleaned ", stderr);
                cancelling->msg(1, "up"); // reports on its way out
                std::fputs("up", stderr);
            });
        action();
        std::fputs("went on", stderr);
        std::exit(0);
    };
    const auto increment = [] { cancelling->increment(1, false); };
    const auto message = [] { cancelling->msg(1, "m"); };
    const auto check = [] { cancelling->checkCancel(); };
    EXPECT_EXIT(cancelled(true, increment), testing::ExitedWithCode(9), "^cleaned up$");
    EXPECT_EXIT(cancelled(true, message), testing::ExitedWithCode(9), "^cleaned up$");
    EXPECT_EXIT(cancelled(false, check), testing::ExitedWithCode(9), "^$");
    EXPECT_EXIT(cancelled(false, increment), testing::ExitedWithCode(0), "^went on$");
    EXPECT_EXIT(cancelled(false, message), testing::ExitedWithCode(0), "^went on$");
}

} // namespace
