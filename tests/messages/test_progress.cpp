// SPDX-License-Identifier: Apache-2.0
#include "logging_director.h"
#include "testkit/alloc_failure.h"
#include "testkit/capture.h"
#include "tools/messages/KazConsoleProgress.h"
#include "tools/messages/KazMsgProgressHandle.h"
#include "tools/messages/KazNGProgress.h"
#include "tools/messages/KazProgressRange.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <sstream>

namespace {

TEST(Progress, RangesCompareByTheirFieldsAndProgressesByIdentity) {
    KazProgressRange changed;
    changed.percent = 1;
    EXPECT_TRUE(changed != KazProgressRange());
    changed.percent = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(KazProgressRange(changed) == changed);
    const KazNGProgress progress;
    EXPECT_TRUE(progress == progress && KazNGProgress(progress) != progress);
    std::ostringstream text;
    progress.print(text);
    EXPECT_EQ(text.str(), "KazProgress\n");
}

/// Closes its ranges as soon as it hears of progress, opens none of its own, and
/// says something else than it was told.
class WilfulProgress : public KazProgress {
public:
    unsigned int reported = 0;
    unsigned int stored = 0;

    void open(double share) { KazProgress::pushRange(share); }

private:
    void pushRange(double) override {}
    unsigned int setProgress(unsigned int value) override {
        popRange();
        popRange();
        return stored = value;
    }
    unsigned int getProgress() const override { return reported; }
};

TEST(Progress, ADerivedClassMayDoWhatItLikes) {
    WilfulProgress progress;
    progress.open(100);
    progress.open(50);
    EXPECT_EQ(progress.set(40, false), 20);
    EXPECT_EQ(progress.get(false), 0);
    EXPECT_EQ(progress.set(30, false), 30);
    progress.reported = UINT_MAX - 1;
    progress.open(100);
    progress.open(100);
    progress.set(100, false);
    EXPECT_EQ(progress.stored, UINT_MAX);
}

TEST(ConsoleProgress, ADotForEveryFivePercent) {
    KazConsoleProgress progress;
    moxkit::Capture capture;
    double before = 0;
    for (int value : {3, 27, 27, 29, 30, 99, 100}) {
        EXPECT_EQ(progress.set(value, true), before);
        EXPECT_EQ(capture.out(), std::string(value / 5, '.'));
        before = value;
    }
}

TEST(DirectorProgress, NumbersCountAndDotsFollowTheTitle) {
    removeConsoleDirector();
    moxkit::Capture capture;
    EXPECT_EQ(KazIODirector::progressStart("Copying 100%d", 7), 1);
    KazIODirector::progressIncrement(1, 12, false);
    KazIODirector::progressMsg(1, 3, "at %s", "x");
    KazIODirector::addCallback(1, 2); // the console calls nobody
    KazIODirector::removeCallback(1, 2);
    KazIODirector::notify(1);
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
    moxkit::Capture capture;
    const KazString title("copy");
    int started = 0;
    EXPECT_GT(moxkit::sweepAllocations([&] { started = KazIODirector::progressStart(title, 0); },
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

TEST(ProgressHandle, ACancelHandlerThatThrowsIsAskedAgain) {
    LoggingDirector director;
    director.install();
    KazProgressHandle handle("work", 0);
    handle.setCancelHandler([] { throw 1; });
    EXPECT_THROW(handle.increment(1, false), int);
    EXPECT_THROW(handle.msg(1, "m"), int);
}

TEST(MsgProgressHandle, ShowsTheMessageAgainAsAFormatWithoutArguments) {
    const std::string longText(3000, 'x');
    moxkit::Capture capture;
    KazMsgProgressHandle handle("work", 0);
    handle.msg(1, "%s", "line\n");
    handle.msg(1, "%s", "50%% of %s %n %5.2f %%%");
    handle.msg(1, "%s", longText.c_str());
    handle.startSubProgress(10, 1); // the console shows nothing of it
    handle.endSubProgress();
    const char* none = nullptr;
    handle.msg(1, none, 0);
    EXPECT_EQ(capture.out(), "work \nline\nline\n"
                             "\n50%% of %s %n %5.2f %%%50% of %s %n %5.2f %%\n"
                             "\n" +
                                 longText + longText.substr(0, 2047) + "\n\n\n");
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

TEST(ProgressHandle, AHandlerWithDataBelongsToItsProgress) {
    struct Impatient : KazIODirector {
        bool isCancelPending(int) override { return true; }
    };
    const auto cancelled = [](bool hasOther, bool isCopied) {
        Impatient director;
        director.install();
        KazProgressHandle first("one", 1), second("two", 1);
        const auto say = [](void* text) { std::fprintf(stderr, "%s\n", static_cast<char*>(text)); };
        char one[] = "first", two[] = "second";
        first.setCancelHandler(say, one);
        if (hasOther)
            second.setCancelHandler(say, two);
        if (isCopied)
            KazProgressHandle(second).checkCancel();
        second.increment(1, false);
        second.setCancelHandler(nullptr, nullptr);
        first.setCancelHandler(nullptr);
        first.increment(1, false);
        std::exit(0);
    };
    EXPECT_EXIT(cancelled(true, false), testing::ExitedWithCode(9), "^second\n$");
    EXPECT_EXIT(cancelled(true, true), testing::ExitedWithCode(9), "^second\n$");
    EXPECT_EXIT(cancelled(false, false), testing::ExitedWithCode(0), "^$");
}

} // namespace
