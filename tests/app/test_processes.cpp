// SPDX-License-Identifier: Apache-2.0
#include "kit/host.h"
#include "lines.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

std::string nativeText(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

/// The host's own search path. Where names of variables have no case it is "Path"
/// as well.
std::string hostSearchPath() {
    return kit::hasDrives ? R"(C:\windows\system32;C:\windows)" : "/usr/bin:/bin";
}

moxkit::RunOptions outermost() {
    moxkit::RunOptions options;
    options.env = {{"KAZCOREROOT", moxkit::unset},
                   {"LANG", "C"},
                   {"PATH", hostSearchPath()},
                   {"COPYCMD", moxkit::unset}};
    if (!kit::hasDrives)
        options.env["Path"] = moxkit::unset;
    return options;
}

/// What a tool says of its environment.
std::map<std::string, std::string> environmentIn(const moxkit::RunOptions& options,
                                                 const std::vector<std::string>& line = {
                                                     "app_tool", "environment"}) {
    const moxkit::Result result = moxkit::run(line, options);
    EXPECT_EQ(result.status, 0) << result.err;
    return lines::linesOf(result.out);
}

/// "Path" after the directory of the programs was put in front.
std::string extendedPath() {
    return nativeText(moxkit::binDirectory()) + (kit::hasDrives ? ";" + hostSearchPath() : "");
}

} // namespace

TEST(Process, OutermostToolPreparesTheEnvironment) {
    moxkit::RunOptions options = outermost();
    auto lines = environmentIn(options);
    const std::string bin = moxkit::binDirectory();
    EXPECT_EQ(lines["name"], "app_tool");
    EXPECT_EQ(lines["nested"] + lines["graphical"], "00");
    EXPECT_EQ(lines["COPYCMD"], "/Y");
    EXPECT_EQ(lines["LANG"], "default");
    EXPECT_EQ(lines["KAZCOREROOT"], nativeText(bin.substr(0, bin.find_last_of("/\\"))));
    EXPECT_EQ(lines["KAZCOREROOT"], lines["root"]);
    EXPECT_EQ(lines["Path"], extendedPath());
    EXPECT_EQ(lines["PATH"], kit::hasDrives ? extendedPath() : bin + ":" + hostSearchPath());
    if (kit::hasDrives)
        return;

    options.env["Path"] = "\\suite;\\other";
    options.env["PATH"] = "";
    lines = environmentIn(options);
    EXPECT_EQ(lines["Path"], nativeText(bin) + ";\\suite;\\other");
    EXPECT_EQ(lines["PATH"], bin);

    // Children find the system's programs without it, too.
    options.env["PATH"] = moxkit::unset;
    EXPECT_EQ(environmentIn(options)["PATH"], bin + ":/bin:/usr/bin");
}

TEST(Process, NestedToolLeavesTheEnvironmentAlone) {
    moxkit::RunOptions options = outermost();
    options.env["KAZCOREROOT"] = "";
    auto lines = environmentIn(options);
    EXPECT_EQ(lines["nested"], "1");
    EXPECT_EQ(lines["COPYCMD"], "/Y");
    EXPECT_EQ(lines["KAZCOREROOT"], "");
    EXPECT_EQ(lines["LANG"], "C");
    EXPECT_EQ(lines["Path"], kit::hasDrives ? hostSearchPath() : "(unset)");
    EXPECT_EQ(lines["PATH"], hostSearchPath());
}

/// The child is found by its plain name although its directory is on no search
/// path of the caller.
TEST(Process, ToolsFindAndNestEachOther) {
    moxkit::TempTree elsewhere;
    moxkit::RunOptions options = outermost();
    options.cwd = elsewhere.path();
    auto lines = environmentIn(options, {"app_tool", "run", "app_tool", "environment"});
    EXPECT_EQ(lines["name"], "app_tool");
    EXPECT_EQ(lines["nested"], "1");
    EXPECT_EQ(lines["LANG"], "default");
    EXPECT_EQ(lines["Path"], extendedPath()) << "prefixed once only";
}

TEST(Process, ExceptionsBecomeStatusesAndOneMessage) {
    const std::pair<const char*, const char*> cases[] = {
        {"memory", "Out of memory or swap space\n"},
        {"file", "Could not find \"100%s\".\n"},
        {"reported", ""},
        {"standard", "Internal error #2\n"},
        {"rethrown", "Internal error #2\n"},
        {"director", "Internal error #2\n"}};
    for (const auto& [what, err] : cases) {
        const auto result = moxkit::run({"app_tool", what});
        EXPECT_EQ(result.status, 1) << what << " signal " << result.signal;
        EXPECT_EQ(result.err, err) << what;
        EXPECT_EQ(result.out, "") << what;
    }
}

TEST(Process, WithoutAnApplicationObjectThereIsAMessage) {
    auto result = moxkit::run({"empty_tool"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "This program has no application object\n");
}

TEST(Process, TemporaryFilesGoAndNothingPrintedIsLost) {
    moxkit::TempTree tree;
    const std::string kept = tree.write("kept", "kept");
    auto result = moxkit::run({"app_tool", "leave", tree.path("a"), tree.native("b")});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "in a buffer of its own, not ended by a line feed");
    EXPECT_EQ(result.err, "in a wide one");
    EXPECT_FALSE(tree.exists("a") || tree.exists("b"));
    EXPECT_TRUE(tree.exists("kept"));
}

TEST(Process, ProductPathComesFromTheProductsVariable) {
    moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.env["ToolInfo"] = tree.write("ToolInfo", "gantt_mox_file_path=g1;g2\n");
    const std::pair<std::vector<std::string>, std::string> runs[] = {
        {{"app_tool", "product", "GANTT"}, "g1;g2|1\n"},
        {{"app_tool", "product", "Pert%s"},
         "templates/ct;templates|1\nTI variable \"pert%s_mox_file_path\" undefined for product "
         "\"Pert%s\" -- using default\n"},
        {{"app_tool", "product"},
         "templates/ct;templates|1\nTI variable \"mox_file_path\" undefined -- using default\n"}};
    for (const auto& [line, said] : runs) {
        const moxkit::Result result = moxkit::run(line, options);
        EXPECT_EQ(result.out + result.err, said);
    }
}

/// What is printed after the application's destructor has closed the streams
/// goes nowhere; everything before arrives, and nothing breaks.
TEST(Process, StaticObjectsMayUseTheLibraryAtAnyTime) {
    moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.env["ToolInfo"] = tree.write("ToolInfo", "x=y\n");
    auto result = moxkit::run({"static_tool"}, options);
    EXPECT_EQ(result.status, 7) << "signal " << result.signal << "\n" << result.err;
    EXPECT_EQ(result.out, "before: application no, context no\n"
                          "body: application yes, context yes\n"
                          "body: name 'static_tool'\n"
                          "late: application yes, context yes\n"
                          "late: name 'static_tool'\n"
                          "destructor: application yes, context yes\n"
                          "destructor: name 'static_tool'\n");
    EXPECT_EQ(result.err, "before on the error channel\nbody on the error channel\n"
                          "late on the error channel\ndestructor on the error channel\n");
}
