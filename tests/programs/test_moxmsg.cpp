// SPDX-License-Identifier: Apache-2.0
#include "kit/await.h"
#include "kit/host.h"
#include "moxmsg.h"
#include "testkit/env.h"
#include "tools/messages/catalog/textcatalog.h"
#include "tools/settings/KazSettings.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace moxmsg_test;

/// That every way to write a text means it is the model's to show.
TEST_F(MoxMsg, ListsAndComparesWhatItCompiles) {
    const std::string file = compile("\xEF\xBB\xBF# comment\r\n15871 last\r\n  00004 one \\\n"
                                     "      line\\\n\\ only\n5 \\ \\a\\\\\\#\\x7E\\xe9\n");
    const std::string listing = "4 one line only\n5 \\ \\a\\\\#~\xE9\n15871 last\n";
    EXPECT_EQ(list(), listing);
    EXPECT_EQ(compile(listing), file);
    const moxkit::Result same =
        run({"-file", tree.path("file"), "-merge", tree.write("listing", listing)});
    EXPECT_EQ(same.status, 0);
    EXPECT_EQ(same.out + same.err, "");
    // The library finds the texts.
    tree.write("kept open", file);
    const moxkit::ScopedEnv configured(
        "ToolInfo", tree.write("ToolInfo", "msg_file=" + tree.native("kept open")).c_str());
    EXPECT_STREQ(TextLook(4), "one line only");
    EXPECT_STREQ(TextLook(15871), "last");
    EXPECT_STREQ(TextLook(20), "");
}

TEST_F(MoxMsg, NamesEachFaultWithItsLine) {
    const std::string before = compile("1 old\n");
    const std::string source =
        tree.write("bad", "# faults\n1 x\n2 " + std::string(128, 'z') +
                              "\n2 again\n15872 high\n99999999999999999999 high\nno number\n7x\n"
                              "3 \\q\n4 \\x0g\n5 \\x00\n6 " +
                              std::string("a\0b", 3) + "\n-1 low\n8 \\\n  goes on \\");
    const moxkit::Result result = run({"-source", source, "-output", tree.path("file")});
    EXPECT_EQ(result.status, 1);
    std::string expected;
    const std::pair<int, const char*> faults[] = {
        {3, "the text of 2 has 128 bytes, 127 fit"},
        {4, "message 2 is in line 3 already"},
        {5, "number 15872 is outside 0 to 15871"},
        {6, "number 99999999999999999999 is outside 0 to 15871"},
        {7, "a line begins with a message number and a blank, or with #"},
        {8, "a line begins with a message number and a blank, or with #"},
        {9, "\\q is no escape"},
        {10, "\\x needs two hexadecimal digits"},
        {11, "a text cannot hold a NUL"},
        {12, "a text cannot hold a NUL"},
        {13, "a line begins with a message number and a blank, or with #"},
        {15, "the last line asks for a continuation"}};
    for (const auto& [line, fault] : faults)
        expected += source + ":" + std::to_string(line) + ": " + fault + "\n";
    EXPECT_EQ(result.err, expected);
    EXPECT_EQ(tree.read("file"), before);
    EXPECT_EQ(run({"-source", source}).status, 1);
    EXPECT_EQ(run({"-source", tree.write("good", "1 x\n")}).status, 0);
}

TEST_F(MoxMsg, TextsBeyondTheEndOfAFile) {
    std::string many, tooMany;
    for (int number = 0; number < 62 * 256; ++number) {
        many += std::to_string(number) + " " + std::string(60, 'm') + "\n";
        // 64 bytes for the first, 80 for each other: one begins just behind the last place.
        tooMany += std::to_string(number) + " " + std::string(number == 0 ? 60 : 64, 'm') + "\n";
    }
    const std::string whole = compile(many);
    EXPECT_LE(whole.size(), 16U * 65535 + 128);
    EXPECT_EQ(list(), many);
    const int first = (16 * 65536 - 128 - 62 * 512 - 64) / 80 + 1;
    const moxkit::Result result =
        run({"-source", tree.write("source", tooMany), "-output", tree.path("file")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.substr(0, result.err.find('\n')),
              tree.path("source") + ":" + std::to_string(first + 1) + ": message " +
                  std::to_string(first) + " does not fit: a message file ends at 1048688 bytes");
    EXPECT_EQ(tree.read("file"), whole);

    tree.write("long", whole + std::string(100000, 'x'));
    EXPECT_EQ(run({"-file", tree.path("long")}).err,
              tree.path("long") + ": is longer than the 1048688 bytes that can be addressed\n");
}

/// The user's settings for complaints, gone again at the end.
class ComplaintSetting {
public:
    explicit ComplaintSetting(const char* program) : section(program) { turn("yes"); }
    ~ComplaintSetting() {
        section.removeAll();
        section.commit();
    }
    void turn(const char* on) {
        section.setText("open complaints in the editor", on);
        section.commit();
    }

private:
    KazSettings section;
};

TEST_F(MoxMsg, OpensItsFirstComplaintWhereTheUserWantsThat) {
    const moxkit::ScopedEnv config("XDG_CONFIG_HOME", tree.path("config").c_str());
    kit::placeProgram("service_peer", tree.mkdir("editor"));
    const std::string bad = tree.write("a $(b).txt", "1 x\nno number\n3 \\q\n");
    const std::string command = "service_peer ${line}:${column} ${name}";
    options.env["PATH"] = tree.path("editor") + (kit::hasDrives ? ";" : ":") + std::getenv("PATH");
    options.env["ToolInfo"] = tree.path("none");
    options.env["KAZ_SOURCE_EDITOR"] = command;
    const auto complain = [&](const char* record) {
        options.env["RECORD_ARGUMENTS"] = tree.path(record);
        const moxkit::Result result = run({"-source", bad});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err,
                  bad + ":2: a line begins with a message number and a blank, or with #\n" + bad +
                      ":3: \\q is no escape\n");
    };
    const auto recorded = [&](const char* record) {
        const std::string words = kit::awaitText(tree, record);
        return words.substr(words.find('\n') + 1); // behind the program
    };
    complain("unasked");
    ComplaintSetting setting("moxmsg");
    complain("asked");
    EXPECT_EQ(recorded("asked"), "2:1\na $(b).txt\n" + bad + "\n");
    setting.turn("no");
    complain("declined");
    setting.turn("yes");
    // One that needs the terminal is for people who sit there.
    options.env["KAZ_SOURCE_EDITOR"] = "@terminal " + command;
    complain("without terminal");
    options.env["KAZ_SOURCE_EDITOR"] = command;
    // Nothing to open.
    options.env["RECORD_ARGUMENTS"] = tree.path("no line");
    EXPECT_EQ(run({"-file", bad}).status, 1);
    EXPECT_EQ(run({"-source", tree.path("nothing")}).status, 1);
    if (!kit::hasDrives) { // one registry for all, and other tests run moxinfo meanwhile
        const ComplaintSetting other("moxinfo");
        options.env["RECORD_ARGUMENTS"] = tree.path("product");
        tree.write("Info", "name=Mox\nversion\n");
        EXPECT_EQ(moxkit::run({"moxinfo", "-product", tree.path("Info")}, options).status, 1);
        EXPECT_EQ(recorded("product").substr(0, 3), "2:1");
        // A finding that is a note is nothing wrong.
        options.env["ToolInfo"] = tree.write("ToolInfo", "empty=\na=b\nno equals\nnor here\n");
        options.env["RECORD_ARGUMENTS"] = tree.path("check");
        EXPECT_EQ(moxkit::run({"moxinfo", "--check"}, options).status, 1);
        EXPECT_EQ(recorded("check").substr(0, 3), "3:1");
    }
    for (const char* none : {"unasked", "declined", "without terminal", "no line"})
        EXPECT_FALSE(tree.exists(none)) << none;
    // Whoever has asked is told why nothing opens.
    options.env["KAZ_SOURCE_EDITOR"] = "";
    options.env["VISUAL"] = options.env["EDITOR"] = moxkit::unset;
    EXPECT_TRUE(
        run({"-source", bad})
            .err.ends_with("\nNo source editor is configured; set the variable source_editor.\n"));
}

TEST_F(MoxMsg, ComparesTextsAndTheirArguments) {
    compile("1 same\n2 %s of %d\n3 only here\n4 %-5s %%\n5 %*d\n6 %2$s %1$d\n7 50% done\n");
    const std::string other =
        tree.write("other", "# line\n1 same\n2 %d of %s\n4 %s\n5 %d\n6 %i, %s\n7 50%\n8 there\n");
    const moxkit::Result result = run({"-file", tree.path("file"), "-merge", other});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "< 2 %s of %d\n> 2 %d of %s\n< 3 only here\n< 4 %-5s %%\n> 4 %s\n"
                          "< 5 %*d\n> 5 %d\n< 6 %2$s %1$d\n> 6 %i, %s\n< 7 50% done\n> 7 50%\n"
                          "> 8 there\n");
    const auto fault = [&](const std::string& file, int number, const char* here, int line,
                           const char* there) {
        return file + ": the arguments of " + std::to_string(number) + " (" + here +
               ") are others in " + other + ":" + std::to_string(line) + " (" + there + ")\n";
    };
    const std::string file = tree.path("file");
    EXPECT_EQ(result.err, fault(file, 2, "%s %d", 3, "%d %s") + fault(file, 5, "%d %d", 5, "%d") +
                              fault(file, 7, "%d", 7, "%(cut off)"));
    const std::string source = tree.path("source");
    const moxkit::Result checked = run({"-source", source, "-merge", other});
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.out, "");
    EXPECT_EQ(checked.err, fault(source + ":2", 2, "%s %d", 3, "%d %s") +
                               fault(source + ":5", 5, "%d %d", 5, "%d") +
                               fault(source + ":7", 7, "%d", 7, "%(cut off)"));
}

TEST_F(MoxMsg, DistrustsFormatsThatOnlySeemToTakeTheSameArguments) {
    const std::string good = tree.write("good", "1 %s\n2 %s %d\n");
    EXPECT_EQ(run({"-source", tree.write("same", "1 %1$s %1$s\n2 %2$3d%%%1$-8s\n"), "-merge", good})
                  .status,
              0);
    for (const char* bad : {"1 %2$s", "1 %0$s", "1 %1$s %1$d", "1 %s %1$s", "1 %4000s", "1 %.4000s",
                            "1 %s %5%", "2 %s", "2 %2$d %s", "2 %2$d"}) {
        const moxkit::Result result = run({"-source", tree.write("bad", bad), "-merge", good});
        EXPECT_EQ(result.status, 1) << bad;
    }
}

TEST_F(MoxMsg, DamagedFilesAreShownAsFarAsTheyGo) {
    const std::string whole = compile("1 one\n300 other\n");
    for (std::size_t length = 0; length < whole.size(); length += 97) {
        tree.write("file", whole.substr(0, length));
        const moxkit::Result result = run({"-file", tree.path("file")});
        EXPECT_EQ(result.status, 1) << length;
        EXPECT_EQ(result.err.rfind(tree.path("file") + ": ", 0), 0U) << result.err;
    }
    std::string endless = whole;
    endless.replace(whole.find("other"), 128, std::string(128, 'e'));
    tree.write("file", endless);
    EXPECT_EQ(run({"-file", tree.path("file")}).err,
              tree.path("file") + ": the text of 300 has no end\n");
    // What is there may be the last that has the texts.
    tree.write("last", "1 text\n");
    for (const std::string file : {"file", "nowhere"}) {
        EXPECT_EQ(run({"-file", tree.path(file), "-output", tree.path("last")}).status, 1);
        EXPECT_EQ(tree.read("last"), "1 text\n");
    }
}

TEST_F(MoxMsg, WhatIsNoSourceTextDoesNotFillTheScreen) {
    std::string lines;
    for (int i = 0; i < 1000; ++i)
        lines += "no number\n";
    const std::string err = run({"-source", tree.write("source", lines)}).err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 101);
    EXPECT_TRUE(err.ends_with(tree.path("source") + ": 900 further problems\n")) << err;
}

TEST_F(MoxMsg, WorksInPipesAndKnowsTheOtherKind) {
    const std::string text = "1 one\n2 two\n";
    const std::string file = compile(text);
    options.input = text;
    EXPECT_EQ(run({"-source", "-", "-output", "-"}).out, file);
    EXPECT_EQ(run({"-file", tree.path("file"), "-output", "-", "-merge", "--", "-"}).out, "");
    EXPECT_FALSE(tree.exists("-"));
    options.input = file;
    EXPECT_EQ(run({"-file", "-"}).out, text);
    EXPECT_EQ(run({"-source", "-"}).err,
              "standard input: is a message file and no source text: -file reads it\n");
    moxkit::Result result = run({"-file", tree.path("source"), "-output", tree.path("out")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              tree.path("source") + ": is a source text and no message file: -source reads it\n");
    options.input = "1 one\n2 tw\\o\n";
    EXPECT_EQ(run({"-source", "-"}).err, "standard input:2: \\o is no escape\n");
}

TEST_F(MoxMsg, ExplainsWrongUsage) {
    compile("1 text\n");
    const std::string file = tree.path("file"), source = tree.path("source");
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "either -source or -file is needed"},
        {{"-source", source, "-file", file}, "-source and -file exclude one another"},
        {{"-file", file, "-merge"}, "-merge needs another file"},
        {{"-file", file, "other"}, "what is other for?"},
        {{"-file", file, "-merge", "one", "two"}, "there is no place for the argument two"},
        {{"-file", "-", "-merge", "--", "-"}, "standard input can be read once only"},
        {{"-source", source, "-output", source}, "-output would overwrite " + source},
        {{"-file", file, "-formats", "po"}, "-formats needs -source"},
        {{"-source", source, "-formats", "po", "-merge", "x"},
         "-formats and -merge exclude one another"},
        {{"-source", source, "-formats", "po", "-output", source},
         "-output would overwrite " + source},
        {{"-source"}, "option -source needs a value"}};
    for (const auto& [arguments, problem] : cases) {
        const moxkit::Result result = run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, "moxmsg: " + problem + "\nmoxmsg -help shows how it is used\n");
    }
    EXPECT_EQ(tree.read("source"), "1 text\n");
    EXPECT_EQ(run({"-file", tree.path("none")}).err,
              tree.path("none") + ": cannot be read: No such file or directory\n");
}

} // namespace
