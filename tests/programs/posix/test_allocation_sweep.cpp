// SPDX-License-Identifier: Apache-2.0
// Whole programs, each of their allocations failing, once or from there on.
#include "programs/posix/swept.h"

#include <gtest/gtest.h>

namespace {

using namespace swept_test;

const std::string outOfMemory = "Out of memory or swap space\n";

class OutOfMemory : public Swept {
protected:
    /// Until no allocation fails any more. A run ends with one message or, where the C
    /// library makes do without the memory, as if nothing had been.
    void sweep(const Words& command, const std::function<void()>& prepare,
               const Check& check) override {
        prepare();
        const moxkit::Result whole = moxkit::run(command, options);
        ASSERT_EQ(whole.status, 0) << whole.err;
        long runs = 0;
        for (onward = false;; onward = true) {
            // The first is the C++ runtime's reserve: without it nothing can be thrown.
            for (long n = onward ? 2 : 1;; ++n, ++runs) {
                prepare();
                fs::remove(tree.path("mark"));
                moxkit::RunOptions failing = options;
                failing.env["LD_PRELOAD"] = moxkit::binDirectory() + "/moxfault.so";
                failing.env["MOX_FAULT"] = "allocation:" + std::to_string(n) + (onward ? "+" : "");
                failing.env["MOX_FAULT_MARK"] = tree.path("mark");
                const moxkit::Result result = moxkit::run(command, failing);
                if (!tree.exists("mark"))
                    break;
                SCOPED_TRACE("allocation " + std::to_string(n) + (onward ? " and later ones" : ""));
                EXPECT_EQ(result.signal, 0);
                if (result.status == 0) {
                    EXPECT_EQ(result.out, whole.out);
                    EXPECT_EQ(withoutComplaint(result.err), whole.err);
                } else {
                    EXPECT_EQ(result.status, 1);
                    EXPECT_FALSE(result.err.empty());
                    const std::string err = withoutComplaint(result.err);
                    EXPECT_TRUE(err == outOfMemory || err.find(outOfMemory) == err.npos) << err;
                }
                check(result);
            }
            if (onward)
                break;
        }
        EXPECT_GT(runs, 20);
        RecordProperty("runs", std::to_string(runs));
    }

    /// That a run could not be recorded is told besides.
    static std::string withoutComplaint(const std::string& text) {
        const bool isThere = text.starts_with("KAZ_DIALOGUE: ");
        return isThere ? text.substr(text.find('\n') + 1) : text;
    }

    /// Without any memory nothing can be cleared away.
    bool mayLeave(const moxkit::Result& result) const override {
        return onward && result.status != 0;
    }

    /// Do the allocations that follow fail too?
    bool onward = false;
};

TEST_F(OutOfMemory, CopyingLeavesWholeFilesAndTheSource) {
    sweepCopy({"moxcopy", "-p", "plant", "-s", "brewery", "-target", "copies", "-Force", "-Quiet"},
              true);
}

TEST_F(OutOfMemory, MessageFilesAreWholeOrAsTheyWere) {
    sweepMessageFile();
}

/// What else the formats ask for is swept inside a process.
TEST_F(OutOfMemory, AReportIsWholeOrAsItWas) {
    sweepReport({"-Quiet"}, false);
}

TEST_F(OutOfMemory, TheConfigurationIsShownOrTheReasonIsTold) {
    sweepOutput({"moxinfo", "name", "other"});
    sweepOutput({"moxinfo"});
    sweepOutput({"moxinfo", "--origin", "other"});
    sweepOutput({"moxinfo", "--check"});
}

TEST_F(OutOfMemory, TheDoctorAndTheScriptsOfShellsAreWholeOrTold) {
    sweepOutput({"moxtool", "doctor"});
    sweepOutput({"moxtool", "completion", "zsh"});
}

TEST_F(OutOfMemory, ARecordingIsNoReasonToFail) {
    options.env["KAZ_DIALOGUE"] = tree.path("recording");
    const Words check = {"moxmsg", "-source", "source"};
    outputOf(check);
    const std::string whole = tree.read("recording");
    sweep(
        check, [&] { fs::remove(tree.path("recording")); },
        [&](const moxkit::Result& result) {
            const std::string recorded =
                tree.exists("recording") ? tree.read("recording") : std::string();
            EXPECT_TRUE(recorded.empty() || recorded.ends_with("}\n")) << recorded;
            EXPECT_TRUE(result.status != 0 || whole.starts_with(recorded) ||
                        result.err.find("KAZ_DIALOGUE: ") != result.err.npos)
                << recorded;
        });
}

TEST_F(OutOfMemory, AStepOfAnotherToolEndsWithAMessage) {
    options.env["KAZ_PROGRESS_FD"] = "9"; // here the pipe of standard output
    const std::string bin = moxkit::binDirectory();
    for (int n = 2; n < 12; ++n) {
        const moxkit::Result result =
            moxkit::run({"/bin/sh", "-c",
                         "exec 9>&1; LD_PRELOAD=" + bin + "/moxfault.so MOX_FAULT=allocation:" +
                             std::to_string(n) + "+ exec " + bin + "/moxmsg -source source"},
                        options);
        EXPECT_EQ(result.signal, 0) << n;
        EXPECT_EQ(result.status, 1) << n;
        EXPECT_EQ(result.err, outOfMemory) << n;
    }
}

} // namespace
