// SPDX-License-Identifier: Apache-2.0
// Whole programs, each of their allocations failing, once or from there on.
#include "programs/moxcopy.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace moxcopy_test;

const std::string outOfMemory = "Out of memory or swap space\n";

class OutOfMemory : public testing::Test {
protected:
    OutOfMemory() {
        options.cwd = tree.path();
        options.env = {{"LC_ALL", "C"}, {"HOME", tree.path()}};
        options.env["ToolInfo"] = tree.write(
            "ToolInfo", "ToolInfo = " + tree.write("site", "other=thing\n") + "\nname=value\n");
        tree.write("source", "1 text\n2 more %s\n");
    }

    /// Runs the program until no allocation fails any more, each time after
    /// @p prepare. A run ends with one message or, where the C library makes do
    /// without the memory, as if nothing had been; @p check sees what it left.
    void sweep(const std::vector<std::string>& command, const std::function<void()>& prepare,
               const std::function<void(const moxkit::Result&)>& check) {
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

    moxkit::TempTree tree{fs::is_directory("/dev/shm") ? "/dev/shm" : ""};
    moxkit::RunOptions options;
    /// Do the allocations that follow fail too?
    bool onward = false;
};

TEST_F(OutOfMemory, CopyingLeavesWholeFilesAndTheSource) {
    tree.write("plant/brewery/a.dgm", "new");
    tree.write("plant/brewery/deep/big", std::string(100000, 'b'));
    const auto source = contents(tree, "plant");
    const std::map<std::string, std::string> old = {{"brewery/a.dgm", "old"},
                                                    {"brewery/own", "kept"}};
    auto complete = contents(tree, "plant");
    complete["brewery/own"] = "kept";
    sweep(
        {"moxcopy", "-p", "plant", "-s", "brewery", "-target", "copies", "-Force", "-Quiet"},
        [&] {
            fs::remove_all(tree.path("copies"));
            for (const auto& [name, text] : old)
                tree.write("copies/" + name, text);
        },
        [&](const moxkit::Result& result) {
            const auto copies = contents(tree, "copies");
            std::size_t leftOver = 0;
            for (const auto& [name, text] : copies)
                if (name.starts_with(".moxcopy"))
                    ++leftOver;
                else
                    EXPECT_TRUE((complete.count(name) > 0 && text == complete.at(name)) ||
                                (old.count(name) > 0 && text == old.at(name)))
                        << name;
            // Without any memory nothing can be cleared away.
            EXPECT_TRUE(leftOver == 0 || (onward && result.status != 0)) << result.err;
            for (const auto& [name, text] : old)
                EXPECT_TRUE(copies.count(name) > 0) << name;
            EXPECT_TRUE(result.status != 0 || copies.size() - leftOver == complete.size());
            EXPECT_EQ(contents(tree, "plant"), source);
        });
}

TEST_F(OutOfMemory, MessageFilesAreWholeOrAsTheyWere) {
    const std::vector<std::string> compile = {"moxmsg", "-source", "source", "-output", "file"};
    ASSERT_EQ(moxkit::run(compile, options).status, 0);
    const std::string compiled = tree.read("file");
    for (const std::string before : {"", "before"})
        sweep(
            compile,
            [&] {
                fs::remove(tree.path("file"));
                if (!before.empty())
                    tree.write("file", before);
            },
            [&](const moxkit::Result& result) {
                EXPECT_EQ(tree.read("file"), result.status == 0 ? compiled : before);
                EXPECT_EQ(tree.exists("file"), !before.empty() || result.status == 0);
            });
    tree.write("file", compiled);
    sweep(
        {"moxmsg", "-file", "file"}, [] {}, [](const moxkit::Result&) {});
}

TEST_F(OutOfMemory, ARecordingIsNoReasonToFail) {
    options.env["KAZ_DIALOGUE"] = tree.path("recording");
    const std::vector<std::string> check = {"moxmsg", "-source", "source"};
    ASSERT_EQ(moxkit::run(check, options).status, 0);
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

TEST_F(OutOfMemory, AReportIsWholeOrAsItWas) {
    options.env["SOURCE_DATE_EPOCH"] = "1700000000";
    for (const std::string name : {"a/one.dgm", "a/filestore/one.1", "a/filestore/one.2", "b/x/y"})
        tree.write("plant/" + name, name);
    // What else the formats ask for is swept inside a process.
    const std::vector<std::string> command = {"moxreport", "-p",     "plant",
                                              "-output",   "report", "-Quiet"};
    ASSERT_EQ(moxkit::run(command, options).status, 0);
    const std::string complete = tree.read("report");
    sweep(
        command, [&] { tree.write("report", "before"); },
        [&](const moxkit::Result& result) {
            EXPECT_EQ(tree.read("report"), result.status == 0 ? complete : "before");
        });
}

TEST_F(OutOfMemory, TheConfigurationIsShownOrTheReasonIsTold) {
    sweep(
        {"moxinfo", "name", "other"}, [] {}, [](const moxkit::Result&) {});
    sweep(
        {"moxinfo"}, [] {}, [](const moxkit::Result&) {});
    sweep(
        {"moxinfo", "--origin", "other"}, [] {}, [](const moxkit::Result&) {});
    sweep(
        {"moxinfo", "--check"}, [] {}, [](const moxkit::Result&) {});
}

TEST_F(OutOfMemory, TheDoctorAndTheScriptsOfShellsAreWholeOrTold) {
    sweep(
        {"moxtool", "doctor"}, [] {}, [](const moxkit::Result&) {});
    sweep(
        {"moxtool", "completion", "zsh"}, [] {}, [](const moxkit::Result&) {});
}

} // namespace
