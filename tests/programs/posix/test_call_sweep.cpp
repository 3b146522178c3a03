// SPDX-License-Identifier: Apache-2.0
// Whole programs, each of their system calls failing once, and killed at any
// moment.
#include "kit/posix/traced.h"
#include "programs/moxcopy.h"
#include "testkit/process.h"
#include "testkit/random.h"
#include "testkit/temp_tree.h"

#include <csignal>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace moxcopy_test;
using Check = std::function<void(const moxkit::Result&)>;

/// In memory: a disk that is forced to write each file out takes its time.
class Programs : public testing::Test {
protected:
    Programs() {
        options.cwd = tree.path();
        options.env = {{"LC_ALL", "C"}, {"HOME", tree.path()}, {"TOOLINFO", moxkit::unset}};
        tree.write("source", "200 To copy: %s\n215 Where is '%s'? '%s' is not there\n");
        moxkit::run({"moxmsg", "-source", "source", "-output", "texts"}, options);
        options.env["ToolInfo"] =
            tree.write("ToolInfo", "ToolInfo=" + tree.write("site", "other=thing\n") +
                                       "\nname=value\nmsg_file=" + tree.path("texts") + "\n");
        tree.write("source", "1 text\n2 more\n");
    }

    /// Fails each call once: each with another of the errors, or with every one
    /// when the environment variable KIT_SWEEP is set.
    void sweep(const std::vector<std::string>& command, const std::function<void()>& prepare,
               const Check& check) {
        if (!kit::canTrace())
            GTEST_SKIP() << "strace is missing, or may not trace here";
        static const std::vector<std::string> errors = {"ENOSPC", "EIO", "EACCES", "EINTR",
                                                        "EMFILE"};
        const bool all = std::getenv("KIT_SWEEP") != nullptr;
        prepare();
        const std::vector<kit::Call> calls = kit::callsOf(command, options);
        ASSERT_GT(calls.size(), 10u);
        std::size_t runs = 0;
        for (std::size_t i = 0; i < calls.size(); ++i)
            for (std::size_t e = 0; e < errors.size(); ++e) {
                if (!all && (i + e) % errors.size() != 0)
                    continue;
                SCOPED_TRACE(calls[i].text + " fails with " + errors[e]);
                prepare();
                const moxkit::Result result =
                    kit::runFailing(command, options, calls[i], errors[e]);
                ++runs;
                EXPECT_EQ(result.signal, 0);
                EXPECT_TRUE(result.status == 0 || result.status == 1) << result.status;
                EXPECT_TRUE(result.status == 0 || !result.err.empty()) << "no message";
                check(result);
            }
        RecordProperty("runs", std::to_string(runs));
    }

    moxkit::TempTree tree{fs::is_directory("/dev/shm") ? "/dev/shm" : ""};
    moxkit::RunOptions options;
};

TEST_F(Programs, ACopyOfASystemIsWholeOrAsItWas) {
    tree.write("plant/brewery/a.dgm", "new");
    tree.write("plant/brewery/deep/big", std::string(100000, 'b'));
    const auto source = contents(tree, "plant");
    std::map<std::string, std::string> old = {
        {"brewery", "/"}, {"brewery/a.dgm", "old"}, {"brewery/own", "kept"}};
    for (const bool exists : {false, true}) {
        auto complete = old;
        for (const auto& [name, text] : contents(tree, "plant/brewery"))
            complete["brewery/" + name] = text;
        if (!exists)
            complete.erase("brewery/own");
        sweep(
            {"moxcopy", "-p", "plant", "-s", "brewery", "-target", "copies", "-Force"},
            [&] {
                fs::remove_all(tree.path("copies"));
                if (exists) {
                    tree.write("copies/brewery/a.dgm", "old");
                    tree.write("copies/brewery/own", "kept");
                }
            },
            [&](const moxkit::Result& result) {
                const auto copies = contents(tree, "copies");
                EXPECT_TRUE(result.status != 0 || copies == complete || !result.err.empty());
                EXPECT_TRUE(result.status != 0 || filesIn(copies) == filesIn(complete));
                for (const auto& [name, text] : copies) {
                    const bool isNew = complete.count(name) > 0 && text == complete.at(name);
                    const bool isOld = exists && old.count(name) > 0 && text == old.at(name);
                    const bool isLeftOver = name.find(".moxcopy") != name.npos &&
                                            result.err.find("Cannot remove") != result.err.npos;
                    EXPECT_TRUE(isNew || isOld || isLeftOver) << name << " and " << result.err;
                }
                for (const auto& [name, text] : old)
                    EXPECT_TRUE(!exists || copies.count(name) > 0) << name;
                EXPECT_EQ(contents(tree, "plant"), source);
            });
    }
}

/// In the middle of one large file, which has no holes: no further portion is begun.
TEST_F(Programs, AnInterruptIsHeardBetweenPortionsOfAFile) {
    if (!kit::canTrace())
        GTEST_SKIP() << "strace is missing, or may not trace here";
    tree.write("plant/brewery/large", std::string(std::size_t{200} << 20, 'x'));
    const std::vector<std::string> command = {"moxcopy", "-p",      "plant", "-s",
                                              "brewery", "-target", "copies"};
    for (const char* signal : {"INT", "TERM"}) {
        int made = 0;
        const moxkit::Result result =
            kit::runSignalled(command, options, "copy_file_range", 2, signal, made);
        EXPECT_EQ(made, 2);
        EXPECT_TRUE(result.status == 9 || result.signal == SIGTERM) << result.err;
        EXPECT_FALSE(tree.exists("copies"));
    }
}

TEST_F(Programs, AMessageFileIsWholeOrAsItWas) {
    const std::vector<std::string> compile = {"moxmsg", "-source", "source", "-output", "file"};
    ASSERT_EQ(moxkit::run(compile, options).status, 0);
    const std::string compiled = tree.read("file");
    for (const bool exists : {false, true})
        sweep(
            compile,
            [&] {
                fs::remove(tree.path("file"));
                if (exists)
                    tree.write("file", "before");
            },
            [&](const moxkit::Result& result) {
                const std::string before = exists ? "before" : "";
                EXPECT_EQ(tree.read("file"), result.status == 0 ? compiled : before);
                EXPECT_EQ(tree.exists("file"), exists || result.status == 0);
                EXPECT_FALSE(tree.exists("file.new0"));
            });
    for (const kit::Call& call : kit::callsOf(compile, options)) {
        const bool creates = call.text.find("file.new") != call.text.npos &&
                             call.text.find("O_CREAT") != call.text.npos;
        EXPECT_TRUE(!creates || call.text.find(", 0600)") != call.text.npos) << call.text;
    }
    tree.write("file", compiled);
    sweep(
        {"moxmsg", "-file", "file"}, [] {},
        [](const moxkit::Result& result) {
            EXPECT_TRUE(result.status == 1 || result.out == "1 text\n2 more\n") << result.out;
        });
}

TEST_F(Programs, AReportIsWholeOrAsItWas) {
    options.env["SOURCE_DATE_EPOCH"] = "1700000000";
    for (const std::string name : {"a/one.dgm", "a/filestore/one.1", "b/x/y"})
        tree.write("plant/" + name, name);
    const std::vector<std::string> command = {"moxreport", "-p", "plant", "-output", "report.html"};
    ASSERT_EQ(moxkit::run(command, options).status, 0);
    const std::string complete = tree.read("report.html");
    sweep(
        command, [&] { tree.write("report.html", "before"); },
        [&](const moxkit::Result& result) {
            const std::string report = tree.read("report.html");
            const bool isTold = report.find("What could not be read") != report.npos;
            EXPECT_TRUE(result.status == 0 ? report == complete : report == "before" || isTold)
                << result.err << report;
            for (const auto& entry : fs::directory_iterator(tree.path()))
                EXPECT_EQ(entry.path().filename().string().find("report.html."), std::string::npos);
        });
}

TEST_F(Programs, AnInterruptedTransferGoesOn) {
    if (!kit::canTrace())
        GTEST_SKIP() << "strace is missing, or may not trace here";
    const std::vector<std::vector<std::string>> commands = {
        {"moxmsg", "-source", "source", "-output", "file"},
        {"moxmsg", "-file", "file"},
        {"moxcopy", "-p", "plant", "-s", "winery", "-target", "copies"}};
    for (const auto& command : commands) {
        const moxkit::Result expected = moxkit::run(command, options);
        const std::string file = tree.read("file");
        for (const kit::Call& call : kit::callsOf(command, options)) {
            static const std::set<std::string> transfers = {"openat", "read", "pread64", "write"};
            // A message on standard error is given up, being no result.
            if (transfers.count(call.name) == 0 || call.text.starts_with("write(2,"))
                continue;
            const moxkit::Result result = kit::runFailing(command, options, call, "EINTR");
            EXPECT_EQ(result.status, expected.status) << call.text;
            EXPECT_EQ(result.out + result.err, expected.out + expected.err) << call.text;
            EXPECT_EQ(tree.read("file"), file) << call.text;
        }
    }
}

TEST_F(Programs, AConfigurationIsShownOrTheReasonIsTold) {
    const std::vector<std::string> show = {"moxinfo", "name", "other"};
    ASSERT_EQ(moxkit::run(show, options).out, "value\nthing\n");
    sweep(
        show, [] {},
        [](const moxkit::Result& result) {
            EXPECT_TRUE(result.status == 1 || result.out == "value\nthing\n")
                << result.out << result.err;
        });
}

} // namespace
