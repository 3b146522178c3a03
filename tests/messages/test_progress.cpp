#include "kit/alloc_failure.h"
#include "kit/capture.h"
#include "kit/random.h"
#include "logging_director.h"
#include "tools/messages/KazConsoleProgress.h"
#include "tools/messages/KazMsgProgressHandle.h"
#include "tools/messages/KazNGProgress.h"
#include "tools/messages/KazProgressRange.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// Progress as it is described on paper, step by step, without a class behind it.
struct Model {
    struct Range {
        double start, end, percent, scale;
    };
    std::vector<Range> ranges; // the innermost is the last
    unsigned stored = 0;

    static double clean(double value) {
        return std::isnan(value) || value < 0 || value > 100 ? 100 : value;
    }

    void push(double share) {
        share = clean(share);
        if (ranges.empty())
            ranges.push_back({1.0 * stored, std::min(100.0, stored + share), 0, share * 0.01});
        else
            ranges.push_back({1.0 * stored, share * ranges.back().scale + stored, 0,
                              share * 0.01 * ranges.back().scale});
    }

    void pop() {
        if (!ranges.empty())
            ranges.pop_back();
    }

    double store(double value) {
        stored = static_cast<unsigned>(value);
        return stored;
    }

    double set(double value, bool absolute) {
        value = clean(value);
        if (absolute)
            return store(value);
        if (ranges.empty()) {
            push(100);
            ranges.back().percent = value;
            return store(value);
        }
        Range& range = ranges.back();
        if (range.percent == 100 || value <= range.percent)
            return range.percent;
        double overall = value * range.scale + range.start;
        if (overall > range.end) {
            range.percent = 100;
            overall = range.end;
        }
        if (overall <= stored)
            return range.percent;
        const double result = store(overall);
        range.percent = (overall - range.start) / (range.end - range.start) * 100;
        return result;
    }

    double increment(double delta, bool absolute) {
        delta = clean(delta);
        if (absolute || ranges.empty())
            return set(stored + delta, absolute);
        return set(ranges.back().percent + delta, false);
    }
};

bool same(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

void expectState(const KazProgress& progress, const Model& model) {
    EXPECT_EQ(progress.get(true), model.stored);
    EXPECT_TRUE(same(progress.get(false), model.ranges.empty() ? 0 : model.ranges.back().percent));
    double low = -1;
    double high = -1;
    EXPECT_TRUE(progress.getRange(low, high, false));
    const Model::Range whole{0, 100, 0, 1};
    const Model::Range& range = model.ranges.empty() ? whole : model.ranges.back();
    EXPECT_EQ(low, range.start * range.scale);
    EXPECT_EQ(high, range.end * range.scale);
    EXPECT_TRUE(progress.getRange(low, high, true));
    EXPECT_EQ(low, 0);
    EXPECT_EQ(high, 100);
}

double anyPercent(kit::Random& random) {
    const double odd[] = {0, 100, -3, 150, nan, 1e300, -0.0, 100.0000001};
    if (random.oneIn(8))
        return odd[random.below(8)];
    return random.oneIn(2) ? random.below(101) : random.below(100000) / 999.0;
}

/// One random operation on both; their results agree.
void step(KazProgress& progress, Model& model, kit::Random& random) {
    const double value = anyPercent(random);
    const bool absolute = random.oneIn(6);
    switch (random.below(9)) {
    case 0:
        progress.pushRange(value);
        model.push(value);
        break;
    case 1:
        progress.popRange();
        model.pop();
        break;
    case 2:
        progress.setRange(value);
        model.pop();
        model.push(value);
        break;
    case 3:
        if (random.oneIn(10)) {
            progress.initialize(absolute);
            if (absolute)
                model = Model();
            model.push(100);
        } else if (random.oneIn(10)) {
            progress.reset();
            model = Model();
        }
        break;
    case 4:
    case 5:
        EXPECT_TRUE(same(progress.set(value, absolute), model.set(value, absolute)));
        break;
    default:
        EXPECT_TRUE(
            same(progress.increment(value / 20, absolute), model.increment(value / 20, absolute)));
    }
}

TEST(Progress, FollowsTheModelAndCopiesGoTheirOwnWay) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int round = 0; round < 200 && !testing::Test::HasFailure(); ++round) {
        KazNGProgress progress;
        Model model;
        KazNGProgress other;
        Model otherModel;
        for (int i = 0; i < 200; ++i) {
            step(progress, model, random);
            expectState(progress, model);
            if (random.oneIn(25)) {
                other = progress;
                otherModel = model;
            } else if (random.oneIn(25)) {
                KazNGProgress copy(progress);
                expectState(copy, model);
                step(copy, otherModel = model, random);
                other = copy;
            }
            const KazNGProgress& self = progress;
            progress = self;
            expectState(other, otherModel);
        }
    }
}

TEST(Progress, NestedStepsAddUpToTheWhole) {
    KazNGProgress progress;
    progress.initialize(false);
    progress.pushRange(40);
    EXPECT_EQ(progress.set(50, false), 20);
    EXPECT_EQ(progress.get(false), 50);
    EXPECT_EQ(progress.set(40, false), 50); // no way back
    progress.popRange();
    EXPECT_EQ(progress.get(false), 0);
    EXPECT_EQ(progress.set(-3, false), 100); // out of range completes

    KazNGProgress late;
    late.set(50, true);
    late.pushRange(80);
    double low;
    double high;
    late.getRange(low, high, false);
    EXPECT_EQ(high, 100 * 0.8); // cut at 100, then scaled
}

TEST(Progress, IsEqualToItselfOnlyAndPrintsItsName) {
    KazNGProgress a;
    KazNGProgress b(a);
    EXPECT_TRUE(a == a);
    EXPECT_FALSE(a != a);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
    std::ostringstream text;
    a.print(text);
    EXPECT_EQ(text.str(), "KazProgress\n");

    const KazProgressRange range;
    double KazProgressRange::*const fields[] = {
        &KazProgressRange::start, &KazProgressRange::end, &KazProgressRange::share,
        &KazProgressRange::percent, &KazProgressRange::scale};
    for (const auto field : fields) {
        KazProgressRange changed(range);
        EXPECT_TRUE(changed == range);
        changed.*field += 1;
        EXPECT_TRUE(changed != range);
        EXPECT_TRUE(range != changed);
        changed.*field = nan;
        EXPECT_TRUE(KazProgressRange(changed) == changed);
    }
}

TEST(Progress, SurvivesEveryFailedAllocation) {
    KazNGProgress progress;
    Model model;
    progress.initialize(false);
    model.push(100);
    model.ranges.reserve(20); // the model itself must not fail
    KazNGProgress target;
    kit::sweepAllocations(
        [&] {
            for (; model.ranges.size() > 1; model.pop())
                progress.popRange();
            for (int i = 0; i < 12; ++i) {
                progress.pushRange(50);
                model.push(50);
            }
            target = progress;
        },
        [&] {
            expectState(progress, model);
            EXPECT_EQ(progress.set(1, false), model.set(1, false));
        });
    expectState(target, model);
}

TEST(ConsoleProgress, ADotForEveryFivePercent) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int round = 0; round < 100; ++round) {
        KazConsoleProgress progress;
        kit::Capture capture;
        unsigned reached = 0;
        while (reached < 100) {
            const unsigned next = reached + static_cast<unsigned>(random.below(30));
            EXPECT_EQ(progress.set(next, true), reached); // the value before
            reached = std::min(next, 100u);
            EXPECT_EQ(capture.out(), std::string(reached / 5, '.'));
        }
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
    EXPECT_EQ(KazIODirector::progressStart("c", 0), 3);
    EXPECT_FALSE(KazIODirector::cancelPending(3));
    EXPECT_EQ(capture.out(), "Copying 100%d ..\nat x ....c ");

    KazIODirector* const console = KazIODirector::getInstance();
    LoggingDirector director;
    director.install();
    EXPECT_EQ(KazIODirector::progressStart("d", 0), 77);
    director.giveUp();
    EXPECT_EQ(KazIODirector::getInstance(), console);
    EXPECT_EQ(KazIODirector::progressStart("e", 0), 4);
}

TEST(DirectorProgress, AStartThatFailsLeavesNothingBehind) {
    KazIODirector::getInstance();
    kit::Capture capture;
    const KazString title("copy");
    int started = 0;
    EXPECT_GT(kit::sweepAllocations([&] { started = KazIODirector::progressStart(title, 0); },
                                    [&] { EXPECT_EQ(started, 0); }),
              1);
    const std::string before = capture.out();
    KazIODirector::progressIncrement(started, 10, false);
    KazIODirector::progressEnd(started);
    EXPECT_EQ(capture.out(), before + "..");
}

TEST(ProgressHandle, SpeaksToTheDirectorUnderItsNumber) {
    LoggingDirector director;
    director.install();
    {
        KazProgressHandle handle("work", 4);
        handle.increment(1.5, false);
        handle.msg(2, "%s %d", "file", 3);
        handle.startSubProgress(30, 5);
        handle.endSubProgress();
        handle.reset();
        EXPECT_TRUE(handle.cancelPending()); // asked for, but nothing comes of it without a handler
        const KazProgressHandle copy(handle);
    }
    EXPECT_EQ(director.takeLog(),
              (std::vector<std::string>{"progressStart work,4", "progressIncrement 77,1.5,0",
                                        "progressMsg 77,2 file 3", "startSubProgress 77,30,5",
                                        "endSubProgress 77", "reset 77", "isCancelPending 77",
                                        "progressEnd 77", "progressEnd 77"}));
}

std::string shownBy(KazMsgProgressHandle& handle, const char* text) {
    kit::Capture capture;
    handle.msg(1, "%s", text);
    return capture.out();
}

TEST(MsgProgressHandle, ShowsTheMessageAgainAsAFormatWithoutArguments) {
    KazMsgProgressHandle handle = [] {
        kit::Capture quiet;
        return KazMsgProgressHandle("work", 0);
    }();
    EXPECT_EQ(shownBy(handle, "half"), "\nhalfhalf\n");
    EXPECT_EQ(shownBy(handle, "line\n"), "\nline\nline\n");
    EXPECT_EQ(shownBy(handle, "50%% of %s %n %5.2f %"),
              "\n50%% of %s %n %5.2f %50% of %s %n %5.2f %\n");
    EXPECT_EQ(shownBy(handle, "%%%"), "\n%%%%%\n");
    const std::string longText(3000, 'x');
    EXPECT_EQ(shownBy(handle, longText.c_str()), "\n" + longText + std::string(2047, 'x') + "\n");
    LoggingDirector director;
    director.install();
    handle.msg(3, "%d%%", 40);
    EXPECT_EQ(director.takeLog().back(), "msg 40%");
}

TEST(ProgressChannel, IsReadAsItWasWritten) {
    kit::Capture quiet;
    removeConsoleDirector();
    for (int number = 1; number <= 5; ++number) {
        KazProgressHandle handle("work", 0);
        for (int a :
             {0, 7, 40, -5, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
            for (int b : {0, 2, -1, std::numeric_limits<int>::max()}) {
                const std::string option = handle.asCmdLine(a, b).getValue();
                const std::string name = " -progress_channel ";
                const std::string value = std::to_string(number) + ":" + std::to_string(a) +
                                          (b != 0 ? ":" + std::to_string(b) : "");
                EXPECT_EQ(option, name + value);
                int numbers[3] = {-9, -9, -9};
                EXPECT_TRUE(KazProgressHandle::parseChannel(value.c_str(), numbers[0], numbers[1],
                                                            numbers[2]));
                EXPECT_EQ(numbers[0], number);
                EXPECT_EQ(numbers[1], a);
                EXPECT_EQ(numbers[2], b);
            }
    }
    int untouched = 9;
    for (const char* bad :
         {"", "5", "5:", ":7", "5:7:", "5:7:2:", "5:7:2:1", "5:7x", " 5:7", "5 :7", "x",
          "99999999999:1", "5::2", static_cast<const char*>(nullptr)})
        EXPECT_FALSE(KazProgressHandle::parseChannel(bad, untouched, untouched, untouched)) << bad;
    EXPECT_EQ(untouched, 9);
}

TEST(CancellationDeathTest, RunsTheHandlerAndEndsWithStatus9) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto cancelled = [](auto action) {
        static LoggingDirector director;
        director.install();
        KazMsgProgressHandle handle("work", 0);
        action(handle);
        std::fputs("went on", stderr);
        std::exit(0);
    };
    const auto withHandler = [](auto action) {
        return [action](KazProgressHandle& handle) {
            handle.setCancelHandler([] { std::fputs("cleaned up", stderr); });
            action(handle);
        };
    };
    const auto increment = [](KazProgressHandle& handle) { handle.increment(1, false); };
    const auto message = [](KazProgressHandle& handle) { handle.msg(1, "m"); };
    const auto check = [](KazProgressHandle& handle) { handle.checkCancel(); };
    EXPECT_EXIT(cancelled(withHandler(increment)), testing::ExitedWithCode(9), "^cleaned up$");
    EXPECT_EXIT(cancelled(withHandler(message)), testing::ExitedWithCode(9), "^cleaned up$");
    EXPECT_EXIT(cancelled(withHandler(check)), testing::ExitedWithCode(9), "^cleaned up$");
    EXPECT_EXIT(cancelled(check), testing::ExitedWithCode(9), "^$");
    EXPECT_EXIT(cancelled(increment), testing::ExitedWithCode(0), "^went on$");
    EXPECT_EXIT(cancelled(message), testing::ExitedWithCode(0), "^went on$");
}

} // namespace
