// SPDX-License-Identifier: Apache-2.0
// The doctor: what is wrong is told under its topic, and nothing is changed.
#include "files/tree.h"
#include "kit/host.h"
#include "kit/table.h"
#include "testkit/env.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

const std::vector<std::string> topics = {"library",   "root",     "programs",   "toolinfo",
                                         "variables", "messages", "temporary",  "home",
                                         "terminal",  "locale",   "environment"};

/// The lines of a topic, without its name: "ok TEXT".
using Verdicts = std::map<std::string, std::vector<std::string>>;

class Doctor : public testing::Test {
protected:
    Doctor() {
        options.cwd = tree.path();
        options.env = {{"TOOLINFO", moxkit::unset},
                       {"HOME", tree.mkdir("home")},
                       {"LC_ALL", "C"},
                       {"KAZ_TMP_DIR", moxkit::unset}};
        configure("printer=porch\ntmp_dir=" + tree.native("copies/deeper") + "\n");
    }

    void configure(const std::string& text) {
        options.env["ToolInfo"] = tree.write("ToolInfo", text);
    }

    /// What it says of each topic; its own form is checked each time.
    Verdicts look() {
        const tree::Snapshot before = tree::snapshot(tree.path());
        const moxkit::Result result = moxkit::run({"moxtool", "doctor"}, options);
        EXPECT_EQ(tree::snapshot(tree.path()), before);
        EXPECT_EQ(result.err, "");
        Verdicts verdicts;
        std::vector<std::string> order;
        bool fails = false;
        std::string out = result.out;
        std::erase(out, '\r');
        for (const std::string& line : kit::lines(out)) {
            const std::vector<std::string> parts = kit::parts(line, "\t");
            EXPECT_EQ(parts.size(), 3U) << line;
            const std::string verdict = parts[0], topic = parts.at(1);
            EXPECT_TRUE(verdict == "ok" || verdict == "warn" || verdict == "fail") << line;
            fails = fails || verdict == "fail";
            if (order.empty() || order.back() != topic)
                order.push_back(topic);
            verdicts[topic].push_back(verdict + " " + parts.at(2));
        }
        EXPECT_EQ(order, topics) << result.out;
        EXPECT_EQ(result.status, fails ? 1 : 0) << result.out;
        return verdicts;
    }

    /// The topics that are not well, with their verdicts.
    std::string ill() {
        std::string result;
        const Verdicts verdicts = look();
        for (const std::string& topic : topics)
            for (const std::string& line : verdicts.at(topic))
                if (!line.starts_with("ok "))
                    result += topic + ": " + line + "\n";
        return result;
    }

    moxkit::TempTree tree;
    moxkit::RunOptions options;
};

TEST_F(Doctor, FindsNothingWhereNothingIsWrong) {
    EXPECT_EQ(ill(), "");
    const Verdicts verdicts = look();
    EXPECT_EQ(verdicts.at("variables").at(0), "ok 2 names are defined");
    EXPECT_EQ(verdicts.at("temporary").at(0),
              "ok " + tree.path("copies/deeper") + ", which is not there yet");
    EXPECT_NE(verdicts.at("programs").at(0).find("moxcopy moxinfo moxmsg"), std::string::npos);
    EXPECT_EQ(verdicts.at("toolinfo").at(0), "ok " + tree.path("ToolInfo"));
}

TEST_F(Doctor, NamesWhatIsWrongWithTheConfiguration) {
    options.env["ToolInfo"] = tree.path("nowhere");
    EXPECT_EQ(ill(), "toolinfo: fail there is no ToolInfo file: ToolInfo names " +
                         tree.path("nowhere") + "\n");

    configure("tmp_dri=x\nprinter\nToolInfo=" + tree.native("gone") + "\n");
    std::string text = ill();
    const std::string file = tree.path("ToolInfo");
    EXPECT_EQ(text.find("toolinfo: fail " + file + ":3: "), 0U) << text;
    EXPECT_NE(text.find("\nvariables: warn " + file + ":1: "), text.npos) << text;
    EXPECT_NE(text.find("\nvariables: warn " + file + ":2: "), text.npos) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3) << text;

    // What a name holds cannot make further lines, nor reach the terminal.
    configure("a\tb\x1b[31m=1\n");
    text = ill();
    EXPECT_EQ(text.find("variables: warn "), 0U) << text;
    EXPECT_EQ(text.find('\x1b'), text.npos);

    configure("tmp_dir=x\n");
    options.env["KAZ_TMP_DIR"] = "y";
    text = ill();
    EXPECT_EQ(text.find("environment: warn KAZ_TMP_DIR overrides "), 0U) << text;
    if (!kit::hasDrives) { // where these are two variables
        options.env["KAZ_TMP_DIR"] = moxkit::unset;
        options.env["TOOLINFO"] = "other";
        EXPECT_EQ(ill(), "environment: warn both ToolInfo and TOOLINFO are set: the second one "
                         "is not looked at\n");
    }
}

TEST_F(Doctor, NamesFilesAndPlacesThatDoNotServe) {
    tree.write("file", "text");
    const auto illWith = [&](const std::string& text) {
        configure(text);
        return ill();
    };
    EXPECT_EQ(illWith("msg_file=" + tree.native("none") + "\n"),
              "messages: fail " + tree.path("none") +
                  " cannot be read: No such file or directory\n");
    EXPECT_EQ(illWith("msg_file=" + tree.native("home") + "\n"),
              "messages: fail " + tree.path("home") + " cannot be read\n");
    EXPECT_EQ(illWith("msg_file=" + tree.native("file") + "\n"),
              "messages: fail " + tree.path("file") + " is no message file\n");
    moxkit::run({"moxmsg", "-source", tree.write("texts", "1 x\n"), "-output", tree.path("msg")});
    EXPECT_EQ(illWith("msg_file=" + tree.native("msg") + "\n"), "");
    EXPECT_EQ(illWith("tmp_dir=" + tree.native("file/below") + "\n"),
              "temporary: fail " + tree.path("file/below") + " cannot be written to\n");
    configure("printer=porch\n");
    if (!kit::hasDrives) {
        options.env["HOME"] = tree.path("file");
        EXPECT_EQ(ill().find("home: warn HOME is " + tree.path("file")), 0U);
        options.env["HOME"] = tree.path("home");
        options.env["LC_ALL"] = "xx_YY.UTF-8";
        EXPECT_EQ(ill(), "locale: warn xx_YY.UTF-8 is not installed here: texts count as ASCII\n");
    }
}

TEST_F(Doctor, TellsWhatIsMissingOrDamagedOfAnInstallation) {
    kit::placeProgram("moxtool", tree.mkdir("suite/bin"));
    const std::string extension = kit::hasDrives ? ".exe" : "";
    fs::copy_file(moxkit::binDirectory() + "/moxmsg" + extension,
                  tree.path("suite/bin/moxmsg" + extension));
    const auto illThere = [&] {
        const moxkit::Result result =
            moxkit::run({tree.path("suite/bin/moxtool"), "doctor"}, options);
        EXPECT_EQ(result.status, 0) << result.err; // it works on
        std::string text;
        for (const char* line : {"warn\tprograms\tmoxcopy is missing", "warn\tprograms\tbin/moxmsg",
                                 "warn\tlibrary\t"})
            text += result.out.find(line) != result.out.npos ? "1" : "0";
        return text;
    };
    EXPECT_EQ(illThere(), "100");
    tree.write("suite/ProductInfo",
               "name=Mox\nversion=1\npart=00000000 0 - bin/moxmsg" + extension + "\n");
    EXPECT_EQ(illThere(), "111"); // the library's topic tells of the file without checksum
}

TEST_F(Doctor, IsMeantByANearWordAndCompleted) {
    const auto completed = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"moxtool", "--complete", std::to_string(words.size() - 1)});
        std::string out = moxkit::run(words, options).out;
        std::erase(out, '\r');
        return out;
    };
    EXPECT_EQ(completed({"doc"}),
              "doctor\tsay whether all that the suite needs is as it should be\n");
    EXPECT_EQ(completed({"completion", "z"}), "zsh\t\n");
    EXPECT_EQ(completed({"completion", "zsh", "moxc"}), "moxcopy\t\n");
    EXPECT_TRUE(completed({"doctor", ""}).starts_with("-trace\t"));
    // A command's words are asked of the command, wherever the question stands.
    EXPECT_TRUE(completed({"new", "-t"}).starts_with("-target\twhere it is made"));
    EXPECT_EQ(completed({"new", "-target", ""}), ":directory\n");
    EXPECT_EQ(completed({"replay", "x", ""}), ":file\n");
    for (const std::string question : {"--explain", "--describe", "-help"}) {
        const moxkit::Result inside =
            moxkit::run({"moxtool", "new", question, "-t", "x", "y"}, options);
        const moxkit::Result before =
            moxkit::run({"moxtool", question, "new", "-t", "x", "y"}, options);
        EXPECT_EQ(before.out, inside.out);
        EXPECT_EQ(before.err, "");
        EXPECT_NE(inside.out.find("-target"), std::string::npos) << inside.out;
    }
    EXPECT_EQ(moxkit::run({"moxtool", "docter"}, options).err,
              "moxtool: unknown command docter; did you mean doctor?\n"
              "moxtool -help shows how it is used\n");
}

TEST_F(Doctor, IsNotAloneInTellingThatItsResultIsLost) {
    if (kit::hasDrives)
        GTEST_SKIP() << "no file is always full here";
    tree.write("project/plant/a.dgm", "text");
    moxkit::run({"moxmsg", "-source", tree.write("texts", "1 x\n"), "-output", tree.path("msg")});
    const std::vector<std::vector<std::string>> commands = {
        {"moxtool", "doctor"},
        {"moxtool", "completion", "zsh"},
        {"moxinfo"},
        {"moxmsg", "-file", "msg"},
        {"moxreport", "-p", "project"},
        {"moxreport", "-p", "project", "-output", "report.html", "-verbose"}};
    for (const bool isClosed : {false, true}) {
        options.stdoutFile = isClosed ? "" : "/dev/full";
        options.closeStdout = isClosed;
        for (const auto& command : commands) {
            const moxkit::Result result = moxkit::run(command, options);
            EXPECT_EQ(result.status, 1) << testing::PrintToString(command);
            EXPECT_EQ(result.err, std::string("standard output: cannot be written: ") +
                                      std::strerror(isClosed ? EBADF : ENOSPC) + "\n");
        }
    }
}

TEST_F(Doctor, TakesNoArguments) {
    const moxkit::Result result = moxkit::run({"moxtool", "doctor", "now"}, options);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err.find("moxtool doctor: there is no place for the argument now"), 0U);
    EXPECT_EQ(result.out, "");
}

} // namespace
