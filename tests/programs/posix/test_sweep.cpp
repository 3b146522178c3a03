// SPDX-License-Identifier: Apache-2.0
// The sweep finds what is wrong with a tool, and nothing where nothing is wrong.
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

// The name is that of the tests of whole programs, which are not run where lines are counted.
class Programs : public testing::Test {
protected:
    Programs() {
        tree.write("work/input", "text");
        tree.write("work/output", "old text\n");
        options.cwd = tree.path("work");
        options.env = {{"ToolInfo", tree.write("ToolInfo", "")}, {"TMPDIR", tree.mkdir("tmp")}};
        options.timeoutSeconds = 300;
    }

    moxkit::Result sweep(const std::string& line, const std::string& directory = ".") {
        return moxkit::run({"moxtool", "sweep", "-Command", line, "-target", directory}, options);
    }

    std::string toolWith(const std::string& fault) const {
        return moxkit::binDirectory() + "/swept_tool " + fault;
    }

    /// The work is as it was, and no copies of it are left.
    void expectUntouched() {
        EXPECT_EQ(tree.read("work/output"), "old text\n");
        EXPECT_EQ(std::distance(fs::directory_iterator(tree.path("work")), {}), 2);
        EXPECT_TRUE(fs::is_empty(tree.path("tmp")));
    }

    moxkit::TempTree tree{fs::is_directory("/dev/shm") ? "/dev/shm" : ""};
    moxkit::RunOptions options;
};

TEST_F(Programs, SweepFindsNothingInAToolWithoutFault) {
    const moxkit::Result result = sweep(toolWith("good"));
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    std::smatch counts;
    ASSERT_TRUE(std::regex_match(result.out, counts,
                                 std::regex("(\\d+) runs, (\\d+) faults injected, 0 failures\n")));
    // Two runs without a fault, and one at the end of each of five rows that meets none.
    EXPECT_EQ(std::stoi(counts[1]), std::stoi(counts[2]) + 7);
    // stat, fopen, write, close, rename: each with three errors.
    EXPECT_GE(std::stoi(counts[2]), 15);
    expectUntouched();

    // What is made under another name is gone where it cannot be made whole.
    const moxkit::Result made = sweep(moxkit::binDirectory() + "/moxtool new x");
    EXPECT_EQ(made.status, 0) << made.out << made.err;
    expectUntouched();
}

TEST_F(Programs, SweepNamesEachFaultWithALineThatShowsItAgain) {
    const struct {
        std::string fault;
        std::string told;
    } cases[] = {
        {"crash", "allocation: ended by signal 11"},
        {"mute", "allocation: ended with status 1 and no message"},
        {"status", "stat: ended with status 3"},
        {"careless", "output is neither as before nor as it should become"},
        {"half", "output is neither as before nor as it should become"},
        {"litter", "output.new is neither as before nor as it should become"},
    };
    for (const auto& [fault, told] : cases) {
        const moxkit::Result result = sweep(toolWith(fault));
        EXPECT_EQ(result.status, 1) << fault << result.err;
        std::smatch line;
        ASSERT_TRUE(std::regex_search(
            result.out, line, std::regex("(^|\n)([^\n]*" + told + "): (MOX_FAULT=[^\n]*)\n")))
            << result.out;
        // Its last words are those of the run that it describes.
        const moxkit::Result again = moxkit::run({"/bin/sh", "-c", line[3]}, options);
        const int ended = again.signal != 0 ? 128 + again.signal : again.status;
        EXPECT_TRUE(fault != "crash" || ended == 128 + 11) << ended;
        EXPECT_TRUE(fault != "mute" || ended == 1) << ended;
        EXPECT_TRUE(fault != "status" || ended == 3) << ended;
        fs::remove(tree.path("work/output.new"));
        tree.write("work/output", "old text\n");
        EXPECT_EQ(result.out.find(", 0 failures"), std::string::npos);
        expectUntouched();
    }
}

TEST_F(Programs, SweepRefusesWhatDoesNotRunWell) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {toolWith("bad"), "LINE ends with status 1 by itself"},
        {"kill -9 $$", "LINE by itself: ended by signal 9"},
        {"./nowhere", "LINE ends with status 127 by itself"},
        {"date +%N", "LINE does not do the same"},
        {"true && " + toolWith("good"), "nothing could be made to fail"},
    };
    for (const auto& [line, told] : cases) {
        const moxkit::Result result = sweep(line);
        EXPECT_EQ(result.status, 2) << line << result.out;
        EXPECT_NE(result.err.find(told), result.err.npos) << result.err;
        EXPECT_EQ(result.out, "");
        expectUntouched();
    }
    options.env["HOME"] = tree.path("work");
    for (const std::string directory : {".", "/", "nowhere", "input"})
        EXPECT_EQ(sweep(toolWith("good"), directory).status, 2) << directory;
    EXPECT_EQ(moxkit::run({"moxtool", "sweep"}, options).status, 2);
    expectUntouched();
}

TEST_F(Programs, SweepLeavesNoHalfOfACopy) {
    tree.write("work/large", std::string(200'000, 'x'));
    const moxkit::Result full =
        moxkit::run({"/bin/bash", "-c", "ulimit -f 100; exec \"$0\" sweep -Command true -target .",
                     moxkit::binDirectory() + "/moxtool"},
                    options);
    EXPECT_NE(full.err.find("cannot copy"), full.err.npos) << full.err;
    EXPECT_TRUE(fs::is_empty(tree.path("tmp")));
}

} // namespace
