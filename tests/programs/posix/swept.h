// SPDX-License-Identifier: Apache-2.0
/// @file
/// What programs have to keep to, whatever fails meanwhile.
#pragma once

#include "programs/moxcopy.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace swept_test {

namespace fs = std::filesystem;
using moxcopy_test::contents;
using moxcopy_test::filesIn;
using Check = std::function<void(const moxkit::Result&)>;
using Words = std::vector<std::string>;

/// Runs of whole programs; what fails in them is up to the class below.
class Swept : public testing::Test {
protected:
    Swept() {
        options.cwd = tree.path();
        options.env = {{"LC_ALL", "C"}, {"HOME", tree.path()}, {"TOOLINFO", moxkit::unset}};
        configure("");
        tree.write("source", "1 text\n2 more %s\n");
    }

    void configure(const std::string& more) {
        const std::string site = tree.write("site", "other=thing\n");
        options.env["ToolInfo"] =
            tree.write("ToolInfo", "ToolInfo = " + site + "\nname=value\n" + more);
    }

    /// Lets each thing that can fail do so in a run of its own, after @p prepare. @p check
    /// sees what the run has left.
    virtual void sweep(const Words& command, const std::function<void()>& prepare,
                       const Check& check) = 0;

    /// Can a run that ended so have been kept from clearing its own files away?
    virtual bool mayLeave(const moxkit::Result& result) const = 0;

    /// The output of a run that ends well.
    std::string outputOf(const Words& command) {
        const moxkit::Result whole = moxkit::run(command, options);
        EXPECT_EQ(whole.status, 0) << whole.err;
        return whole.out;
    }

    void sweepOutput(const Words& command) {
        const std::string whole = outputOf(command);
        sweep(
            command, [] {},
            [&](const moxkit::Result& result) {
                EXPECT_TRUE(result.status == 1 || result.out == whole) << result.out << result.err;
            });
    }

    /// Each file of a copied system is whole, or as before where there was one.
    void sweepCopy(const Words& command, bool exists) {
        tree.write("plant/brewery/a.dgm", "new");
        tree.write("plant/brewery/deep/big", std::string(100000, 'b'));
        const auto source = contents(tree, "plant");
        std::map<std::string, std::string> old, complete = source;
        if (exists) {
            old = {{"brewery", "/"}, {"brewery/a.dgm", "old"}, {"brewery/own", "kept"}};
            complete["brewery/own"] = "kept";
        }
        sweep(
            command,
            [&] {
                fs::remove_all(tree.path("copies"));
                for (const auto& [name, text] : old)
                    if (text != "/")
                        tree.write("copies/" + name, text);
            },
            [&](const moxkit::Result& result) {
                const auto copies = contents(tree, "copies");
                EXPECT_TRUE(result.status != 0 || copies == complete || !result.err.empty());
                EXPECT_TRUE(result.status != 0 || filesIn(copies) == filesIn(complete));
                for (const auto& [name, text] : copies) {
                    const bool isNew = complete.count(name) > 0 && text == complete.at(name);
                    const bool isOld = old.count(name) > 0 && text == old.at(name);
                    const bool isLeftOver = name.find(".moxcopy") != name.npos && mayLeave(result);
                    EXPECT_TRUE(isNew || isOld || isLeftOver) << name << " and " << result.err;
                }
                for (const auto& [name, text] : old)
                    EXPECT_TRUE(copies.count(name) > 0) << name;
                EXPECT_EQ(contents(tree, "plant"), source);
            });
    }

    /// A message file is whole or as before, and listed whole or not at all.
    void sweepMessageFile() {
        const Words compile = {"moxmsg", "-source", "source", "-output", "file"};
        outputOf(compile);
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
                    EXPECT_TRUE(!tree.exists("file.new0") || mayLeave(result));
                });
        tree.write("file", compiled);
        EXPECT_EQ(outputOf({"moxmsg", "-file", "file"}), tree.read("source"));
        sweepOutput({"moxmsg", "-file", "file"});
    }

    /// A report is whole or as before. One that a failure kept from something says so, if it
    /// may come to an end at all; what is said of it on standard output can fail, too.
    void sweepReport(Words more, bool mayTell) {
        options.env["SOURCE_DATE_EPOCH"] = "1700000000";
        for (const std::string name :
             {"a/one.dgm", "a/filestore/one.1", "a/filestore/one.2", "b/x/y"})
            tree.write("plant/" + name, name);
        more.insert(more.begin(), {"moxreport", "-p", "plant", "-output", "report.html"});
        outputOf(more);
        const std::string complete = tree.read("report.html");
        sweep(
            more, [&] { tree.write("report.html", "before"); },
            [&](const moxkit::Result& result) {
                const std::string report = tree.read("report.html");
                const bool isTold = mayTell && report.find("What could not be read") != report.npos;
                const bool isLate = report == complete &&
                                    result.err.starts_with("standard output: cannot be written");
                EXPECT_TRUE(result.status == 0 ? report == complete
                                               : report == "before" || isTold || isLate)
                    << result.err << report;
                for (const auto& entry : fs::directory_iterator(tree.path()))
                    EXPECT_TRUE(!entry.path().filename().string().starts_with("report.html.") ||
                                mayLeave(result))
                        << entry;
            });
    }

    /// In memory: a disk that is forced to write each file out takes its time.
    moxkit::TempTree tree{fs::is_directory("/dev/shm") ? "/dev/shm" : ""};
    moxkit::RunOptions options;
};

} // namespace swept_test
