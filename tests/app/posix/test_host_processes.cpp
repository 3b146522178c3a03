// SPDX-License-Identifier: Apache-2.0
// Names under which only a POSIX host starts a tool, and its devices.
#include "app/lines.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <map>

using lines::linesOf;

TEST(Process, NameIsTheLastComponentInLowerCaseWithoutExe) {
    const std::map<std::string, std::string> names = {{"C:\\Tools\\MyTool.EXE", "mytool"},
                                                      {"/a/B.exe/tool.exe.bak", "tool.exe.bak"},
                                                      {"x.exe.exe", "x.exe"},
                                                      {".exe", ""},
                                                      {"exe", "exe"},
                                                      {"dir/", ""}};
    const std::string script =
        "import os, sys\nos.execv(sys.argv[1], [sys.argv[2], 'environment'])";
    for (const auto& [argv0, name] : names) {
        auto lines = linesOf(moxkit::run({"/usr/bin/python3", "-c", script,
                                          moxkit::binDirectory() + "/app_tool", argv0})
                                 .out);
        EXPECT_EQ(lines["argv0"], argv0);
        EXPECT_EQ(lines["name"], name) << argv0;
    }
}

TEST(Process, AForkedChildDeletesItsOwnFilesOnly) {
    moxkit::TempTree tree;
    for (const bool childHasOne : {false, true}) {
        std::vector<std::string> line = {"fork_tool", tree.write("parents", "")};
        if (childHasOne)
            line.push_back(tree.write("childs", ""));
        EXPECT_EQ(moxkit::run(line).out, childHasOne ? "10" : "1");
        EXPECT_FALSE(tree.exists("parents") || tree.exists("childs"));
    }
}

/// Its std::cout throws when it cannot write.
TEST(Process, TemporaryFilesGoAlthoughNothingCanBePrinted) {
    moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.stdoutFile = "/dev/full";
    const auto result = moxkit::run({"app_tool", "leave", tree.path("a")}, options);
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err, "in a wide one");
    EXPECT_FALSE(tree.exists("a"));
}

TEST(Process, TheRunOfATestEndsInTimeWhateverHoldsIt) {
    moxkit::RunOptions options;
    options.timeoutSeconds = 1;
    for (const char* script : {"exec >&- 2>&-; exec sleep 60", "sleep 3 & exit 0"}) {
        const moxkit::Result result = moxkit::run({"/bin/sh", "-c", script}, options);
        EXPECT_EQ(result.signal, 9) << script;
        EXPECT_EQ(result.status, -1) << script;
    }
}
