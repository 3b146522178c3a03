// SPDX-License-Identifier: Apache-2.0
// What tools say and are told is written down, and what is written down can be played again.
#include "kit/host.h"
#include "kit/table.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// All that dialogue_tool says between start and end, on whichever director.
std::string saidLines(const std::string& reply, const std::string& given) {
    return R"({"event":"message","text":"one\ntwo\n"}
{"event":"error","text":"tank 3"}
{"event":"message","text":"\"quoted\" \\ \u0001)"
           "\x7f caf\xc3\xa9 "
           R"(\udcff\udcc3(\udced\udcb2\udc80"}
{"event":"symbol-message","text":"here","symbols":[7]}
{"event":"symbol-error","text":"nowhere","symbols":[]}
{"event":"command-start","text":"ls -l"}
{"event":"command-output","text":"file"}
{"event":"command-end"}
{"event":"question","title":"Copy","text":"Sure?","type":4,"default":1,"reply":)" +
           reply + R"(}
{"event":"input","title":"Copy","prompt":"System","echo":true,"given":true,"text":")" +
           given + R"("}
{"event":"input","title":"Copy","prompt":"Password","echo":false,"given":)" +
           (reply == "2" ? "true" : "false") + R"(}
{"event":"message","text":"reply )" +
           reply + R"("}
{"event":"progress-start","id":1,"title":"Copying","total":4}
{"event":"progress","id":1,"percent":1}
{"event":"progress","id":1,"percent":16}
{"event":"progress","id":1,"percent":31}
{"event":"progress","id":1,"percent":46}
{"event":"progress","id":1,"percent":51}
{"event":"progress-message","text":"half of it","level":2}
{"event":"progress","id":1,"percent":0}
{"event":"progress","id":1,"percent":100}
{"event":"progress-end","id":1}
)";
}

std::string startLine(const std::string& arguments) {
    return R"({"event":"start","tool":"dialogue_tool","argv":[)" + arguments + R"(],"library":")" +
           LIBRARY_VERSION + "\"}\n";
}

const std::string endLine = "{\"event\":\"end\",\"status\":5}\n";

class Dialogue : public testing::Test {
protected:
    Dialogue() {
        options.cwd = tree.path();
        options.input = "yes\nbrewery\n\n";
        options.env = {{"ToolInfo", tree.write("ToolInfo", "")}, {"KAZ_DIALOGUE", moxkit::unset}};
    }

    moxkit::Result record(const std::vector<std::string>& arguments, const std::string& to = "a") {
        moxkit::RunOptions recorded = options;
        recorded.env["KAZ_DIALOGUE"] = to;
        std::vector<std::string> line = {"dialogue_tool"};
        line.insert(line.end(), arguments.begin(), arguments.end());
        return moxkit::run(line, recorded);
    }

    /// What moxtool says of it, behind its status.
    std::string replay(const std::vector<std::string>& words = {"a"}) {
        std::vector<std::string> line = {"moxtool", "replay"};
        line.insert(line.end(), words.begin(), words.end());
        const moxkit::Result result = moxkit::run(line, options);
        std::string text = result.err + result.out;
        std::erase(text, '\r');
        return std::to_string(result.status) + " " + text;
    }

    moxkit::TempTree tree;
    moxkit::RunOptions options;
};

TEST_F(Dialogue, IsWrittenDownWhateverTheDirectorAndPlaysAgain) {
    // Elsewhere arguments are text in the code page.
    const std::string odd = kit::hasDrives ? "a \"b\"" : "a \"b\"\xff";
    const std::string oddInJson = kit::hasDrives ? R"("a \"b\"")" : R"("a \"b\"\udcff")";
    for (const std::string director : {"console", "terminal", "mute"}) {
        const bool isMute = director == "mute";
        const moxkit::Result result = record({director, odd});
        EXPECT_EQ(result.status, 5);
        EXPECT_EQ(tree.read("a"), startLine('"' + director + "\"," + oddInJson) +
                                      saidLines(isMute ? "2" : "0", isMute ? "plant" : "brewery") +
                                      endLine);
        const moxkit::Result plain = moxkit::run({"dialogue_tool", director, odd}, options);
        EXPECT_EQ(plain.out + plain.err, result.out + result.err);
        EXPECT_EQ(replay(), "0 ");
    }
}

TEST_F(Dialogue, KeepsSecretsAndSoCannotGiveThemAgain) {
    options.input = "yes\nbrewery\nopensesame\n";
    record({"console"});
    EXPECT_EQ(tree.read("a").find("sesame"), std::string::npos);
    EXPECT_NE(tree.read("a").find("\"echo\":false,\"given\":true}\n"), std::string::npos);
    EXPECT_EQ(replay().substr(0, 7), "1 a:12:");
}

TEST_F(Dialogue, EndsWithWhatEndsTheTool) {
    EXPECT_EQ(record({"console", "fatal"}).status, 1);
    const std::string last = "{\"event\":\"fatal\",\"text\":\"no more memory\"}\n";
    EXPECT_EQ(tree.read("a"), startLine(R"("console","fatal")") + saidLines("0", "brewery") + last);
    EXPECT_EQ(replay(), "0 ");
}

TEST_F(Dialogue, IsOfTheOutermostToolAndALogOfAll) {
    const std::string nested = '"' + moxkit::binDirectory() + "/dialogue_tool\" mute";
    options.env["LC_ALL"] = "C";
    EXPECT_EQ(record({"mute", "nested", nested}).status, 5);
    const std::string text = tree.read("a");
    EXPECT_EQ(text.find("\"start\""), text.rfind("\"start\""));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 26);

    EXPECT_EQ(record({"mute", "nested", nested}, "+log").status, 5);
    EXPECT_EQ(record({"mute"}, "+log").status, 5);
    const std::vector<std::string> log = kit::lines(tree.read("log"));
    std::size_t starts = 0;
    for (const std::string& line : log) {
        const std::size_t time = line.rfind(",\"time\":\"20");
        const std::size_t process = line.find("Z\",\"pid\":", time);
        EXPECT_TRUE(time != line.npos && process != line.npos && line.ends_with('}')) << line;
        EXPECT_EQ(process - time, std::string(",\"time\":\"2026-11-22T08:05:09.250").size())
            << line;
        starts += line.starts_with("{\"event\":\"start\"") ? 1 : 0;
    }
    EXPECT_EQ(starts, 3U);
    EXPECT_EQ(log.size(), 26U + 24 + 24);
    EXPECT_EQ(replay({"log"}), "2 log:1: belongs to a log, which may be of several tools\n");
}

TEST_F(Dialogue, ThatCannotBeWrittenCostsTheToolNothing) {
    const moxkit::Result plain = moxkit::run({"dialogue_tool", "mute"}, options);
    tree.mkdir("directory");
    std::vector<std::pair<std::string, std::string>> places = {
        {"directory", "Is a directory"}, {"none/a", "No such file or directory"}};
    if (!kit::fullDevice().empty())
        places.emplace_back(kit::fullDevice(), "No space left on device");
    for (const auto& [place, reason] : places)
        for (const std::string prefix : {"", "+"}) {
            const moxkit::Result result = record({"mute"}, prefix + place);
            std::string err = result.err;
            std::erase(err, '\r');
            EXPECT_EQ(err, "KAZ_DIALOGUE: cannot write '" + place + "': " + reason + "\n");
            EXPECT_EQ(result.out, plain.out);
            EXPECT_EQ(result.status, 5);
        }
    EXPECT_EQ(record({"mute"}, "").err, "");
    if (!kit::hasDrives) {
        EXPECT_EQ(record({"mute"}, "none/\x1b[31m\n").err,
                  "KAZ_DIALOGUE: cannot write 'none/\\x1B[31m\\x0A': No such file or directory\n");
    }
}

TEST_F(Dialogue, ReplayTellsTheFirstDifferenceAndTakesItOver) {
    record({"console"});
    const std::string good = tree.read("a");
    std::string changed = good;
    changed.replace(changed.find("tank 3"), 6, "tank 4");
    tree.write("a", changed);
    EXPECT_EQ(replay(), "1 a:3: expected {\"event\":\"error\",\"text\":\"tank 4\"}, "
                        "got {\"event\":\"error\",\"text\":\"tank 3\"}\n");
    EXPECT_EQ(replay({"a", "-x", "tank \\d", "TANK"}), "0 ");
    EXPECT_EQ(replay({"-x", "tank \\d", "T", "a", "-x", "T", "3", "-update"}), "0 ");
    EXPECT_EQ(tree.read("a"), changed); // as it is the same but for what does not count
    EXPECT_EQ(replay({"a", "-update"}), "0 ");
    EXPECT_EQ(tree.read("a"), good);

    tree.write("b", good + "{\"event\":\"message\"}\n");
    tree.write("c", good.substr(0, good.find('\n') + 1));
    const std::string second = "{\"event\":\"message\",\"text\":\"one\\ntwo\\n\"}";
    EXPECT_EQ(replay({"a", "b", "c"}),
              "1 b:25: expected {\"event\":\"message\"}, got the end\nc:2: expected the end, got " +
                  second + "\n");

    // Traces are none of it, and line ends may have been changed.
    changed.clear();
    for (const char c : good)
        changed += c == '\n' ? "\r\n" : std::string(1, c);
    tree.write("a", changed + "{\"event\":\"trace\",\"topic\":\"files\",\"text\":\"\"}\n");
    EXPECT_EQ(replay(), "0 ");
}

TEST_F(Dialogue, WhatIsNoRecordingIsRefused) {
    const std::string start = R"({"event":"start","tool":"dialogue_tool","argv":[]})";
    const std::pair<std::string, std::string> bad[] = {
        {"", ": is no recording"},
        {"{", ":1: is no JSON"},
        {start + "\n\n", ":2: is no JSON"},
        {start + "\n{\"a\":" + std::string(100000, '['), ":2: is nested too deeply"},
        {"[]", ":1: is no object"},
        {R"({"event":"end"})", ":1: is not the start of a recording"},
        {start + "\n" + start, ":2: starts another recording"},
        {R"({"event":"start","tool":"/bin/sh","argv":[]})", ":1: \"tool\" is no name of a program"},
        {R"({"event":"start","tool":"sh","argv":{}})", ":1: \"argv\" is no list"},
        {R"({"event":"start","tool":"sh","argv":["\u0000"]})", ":1: \"argv\" holds a NUL"},
        {start + "\n{\"event\":\"question\"}", ":2: has no \"reply\""}};
    for (const auto& [text, problem] : bad) {
        tree.write("a", text);
        EXPECT_EQ(replay(), "2 a" + problem + "\n");
        EXPECT_EQ(replay({"a", "-update"}), "2 a" + problem + "\n");
        EXPECT_EQ(tree.read("a"), text);
    }
    EXPECT_EQ(replay({"none"}), "2 none: cannot be read: No such file or directory\n");
    EXPECT_EQ(replay({"."}), "2 .: cannot be read: Is a directory\n");
    EXPECT_EQ(replay({"\x7F.a"}), "2 \\x7F.a: cannot be read: No such file or directory\n");

    tree.write("a", start);
    const std::string help = "\nmoxtool replay -help shows how it is used\n";
    const std::size_t many = kit::hasDrives ? 20000 : 100000; // what a command line holds
    EXPECT_EQ(replay({"a", "-x", std::string(many, '('), ""}).substr(0, 2), "2 ");
    EXPECT_EQ(replay({"a", "-x", "(a)\\1", ""}).substr(0, 2), "2 ");
    EXPECT_EQ(replay({"a", "-x", "[", ""}),
              "2 moxtool replay: [ is no pattern: its brackets do not match" + help);
    EXPECT_EQ(replay({}), "2 moxtool replay: arguments are missing: FILE ..." + help);
    // A line that is long for a matcher that goes deeper with each character.
    tree.write("a",
               start + "\n{\"event\":\"message\",\"text\":\"" + std::string(300000, 'x') + "\"}");
    EXPECT_EQ(replay({"a", "-x", "x*", "y"}).substr(0, 4), "1 a:");

    tree.write("a", R"({"event":"start","tool":"nosuchtool","argv":[]})");
    EXPECT_EQ(replay(),
              "1 moxtool: \"nosuchtool\" could not be started: No such file or directory\n");
}

TEST_F(Dialogue, AToolWithADirectorOfItsOwnIsRecordedToo) {
    options.env["ToolInfo"] = tree.write("ToolInfo", "tmp_dir=" + tree.path("copies") + "\n");
    tree.write("plant/brewery/mashing.dgm", "text");
    moxkit::RunOptions recorded = options;
    recorded.env["KAZ_DIALOGUE"] = "a";
    const std::vector<std::string> copy = {"moxcopy", "-projdir", "plant", "-system", "brewery"};
    EXPECT_EQ(moxkit::run(copy, recorded).status, 0);
    const std::string first = tree.read("a");
    EXPECT_NE(first.find("{\"event\":\"progress-start\",\"id\":1,"), first.npos) << first;
    EXPECT_TRUE(first.ends_with("{\"event\":\"end\",\"status\":0}\n")) << first;

    // The second time it asks, and the recorded answer decides.
    recorded.input = "n\n";
    moxkit::run(copy, recorded);
    EXPECT_NE(tree.read("a").find("{\"event\":\"question\","), std::string::npos);
    EXPECT_EQ(replay(), "0 ");
}

} // namespace
