// SPDX-License-Identifier: Apache-2.0
#include "kit/host.h"
#include "kit/random.h"
#include "kit/table.h"
#include "kit/valgrind.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

class MoxInfo : public testing::Test {
protected:
    MoxInfo() {
        options.env = {{"HOME", tree.path()},
                       {"LC_ALL", "C"},
                       {"TOOLINFO", moxkit::unset},
                       {"ToolInfo", tree.write("first", "a=1\nb=2\nempty=\nToolInfo=~/second\n")}};
        tree.write("second", "b=3\nc=4\nempty=hidden\n");
    }

    moxkit::Result run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "moxinfo");
        return moxkit::run(arguments, options);
    }

    /// The text with "first" for that file, "FIRST" for its native name, and so on. Where
    /// both are spelled alike, what stands before a line's number is not the native one.
    std::string named(std::string text) const {
        for (const auto& [name, nativeName] :
             kit::pairs("first = FIRST | second = SECOND | more = MORE")) {
            replace(text, tree.path(name) + ":", name + ":");
            replace(text, tree.native(name), nativeName);
            replace(text, tree.path(name), name);
        }
        return text;
    }

    static void replace(std::string& text, const std::string& from, const std::string& to) {
        for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
            text.replace(at, from.size(), to);
    }

    moxkit::TempTree tree;
    moxkit::RunOptions options;
};

TEST_F(MoxInfo, ShowsEachVariableUnderItsSource) {
    options.env["KAZ_C"] = "two\nlines";
    EXPECT_EQ(run({}).status, 0);
    EXPECT_EQ(named(run({}).out), "% ToolInfo files:\n%   FIRST\n%   SECOND\n"
                                  "% from environment\nc=two lines\n"
                                  "% from library\nTI_locale=" +
                                      kit::localeOfC() +
                                      "\nToolInfo=FIRST\nToolInfoPath=FIRST SECOND\n"
                                      "% from FIRST\na=1\nb=2\nempty=\n");
    EXPECT_EQ(named(run({"-source", tree.path("first")}).out), "% from FIRST\na=1\nb=2\nempty=\n");
    EXPECT_EQ(run({"-source", "environment"}).out, "% from environment\nc=two lines\n");

    tree.write("more", "a=9\nd=5\n");
    const moxkit::Result more = run({"-file", tree.path("more"), "-source", tree.path("more")});
    EXPECT_EQ(named(more.out), "% from MORE\na=9\nd=5\n");
}

TEST_F(MoxInfo, TellsWhereEachValueComesFrom) {
    options.env["KAZ_C"] = "two\nlines";
    moxkit::Result result = run({"--origin", "b", "c", "ToolInfo"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(named(result.out), "b=2\n"
                                 "  environment KAZ_B: not set\n"
                                 "  run-time: not set\n"
                                 "* first:2: 2\n"
                                 "  second:1: 3 [an earlier file defines it]\n"
                                 "c=two lines\n"
                                 "* environment KAZ_C: two lines\n"
                                 "  run-time: not set\n"
                                 "  second:2: 4 [the environment sets it]\n"
                                 "ToolInfo=FIRST\n"
                                 "  environment KAZ_TOOLINFO: not set\n"
                                 "  run-time: not set\n"
                                 "* library: FIRST\n"
                                 "  first:4: ~/second [the library sets it]\n");

    result = run({"--origin", "empty", "emtpy"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(named(result.out).find("* first:3: \n"), result.out.npos);
    EXPECT_EQ(result.err, "moxinfo: emtpy is not defined; did you mean empty?\n");
    EXPECT_EQ(run({"--origin", "empty"}).status, 1) << "it reads as undefined";

    tree.write("more", "b=9\nb=8\n");
    result = run({"-file", tree.path("more"), "--origin", "b"});
    EXPECT_TRUE(named(result.out)
                    .ends_with("  second:1: 3 [a later file replaces it]\n"
                               "  more:1: 9 [line 2 replaces it]\n"
                               "* more:2: 8\n"));

    EXPECT_EQ(run({"--origin", "-output", tree.path("all")}).status, 0);
    const std::string all = tree.readText("all");
    EXPECT_TRUE(all.starts_with("TI_locale=" + kit::localeOfC() + "\n")) << all;
    EXPECT_NE(all.find("\nempty=\n"), all.npos);
}

/// Each line of a check without its file and text: "3 warning no-equals".
std::vector<std::string> digest(const std::string& output, const std::string& file) {
    std::vector<std::string> lines;
    for (std::string line : kit::lines(output)) {
        const std::size_t code = line.rfind(" [");
        if (line.starts_with(file + ":"))
            line.erase(0, file.size() + 1);
        if (code == line.npos || line.back() != ']') {
            lines.push_back(line);
            continue;
        }
        const std::size_t place = line.find(": "), severity = line.find(": ", place + 2);
        const std::size_t at = line.rfind(" [");
        lines.push_back(line.substr(0, place) + line.substr(place + 1, severity - place - 1) + " " +
                        line.substr(at + 2, line.size() - at - 3));
    }
    return lines;
}

using Lines = std::vector<std::string>;

TEST_F(MoxInfo, FindsWhatTheReaderPassesOver) {
    EXPECT_EQ(named(run({"--check"}).out),
              "first:3: note: \"empty\" is empty: it reads as undefined, and no later file can "
              "define it [empty]\n"
              "second:1: note: \"b\" is \"2\" by first:2, which comes first [shadowed]\n"
              "second:3: note: \"empty\" is \"\" by first:3, which comes first [shadowed]\n"
              "0 errors, 0 warnings, 3 notes\n");
    EXPECT_EQ(run({"--check"}).status, 0) << "notes are nothing wrong";

    std::string text = "\xEF\xBB\xBF% comment\n"                           // 1
                       "#tmp_dir = x\n#\n"                                 // 2, 3
                       "tmp_dir\t=x\nTMP_DIR=x\ntmp_dri=x\ntmp=x\n"        // 4 to 7
                       "no equals\n = 5\n"                                 // 8, 9
                       "quoted='x'\nhalf='x\nodd=\tx\ncr=a\rb\n% a\rb=1\n" // 10 to 14
                       "  % c=1\na b = c\n\"name\"=x\nTI_locale=C\n"       // 15 to 18
                       "doubled=1\ndoubled=2\ndoubled=2\n"                 // 19 to 21
                       "abc_mox_file_path=x\nrman=x\n% " +                 // 22, 23, 24
                       std::string(5200, 'v') +
                       "=\nn=x";                                              // 24, 25
    text += std::string(1, '\0') + "y\r\n" + std::string(5118, 'w') + "=x\n"; // 25, 26
    options.env["ToolInfo"] = tree.write("bad", text + "ToolInfo=~/none\x1b");
    const moxkit::Result bad = run({"--check"});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(
        digest(bad.out, tree.path("bad")),
        kit::parts(
            "1 error byte-order-mark|1 warning no-equals|2 warning hash-comment|"
            "3 warning hash-comment|4 warning odd-name|5 warning near-name|6 warning near-name|"
            "8 warning no-equals|9 warning no-name|10 note quoted|12 warning odd-value|"
            "13 warning carriage-return|14 warning carriage-return|15 warning odd-name|"
            "16 warning odd-name|17 warning odd-name|18 warning reserved|19 warning duplicate|"
            "20 note duplicate|24 warning long-line|24 note empty|25 error nul-byte|"
            "27 warning odd-value|27 error chain-unreadable|3 errors, 18 warnings, 3 notes"));
    EXPECT_NE(bad.out.find(":6: warning: nothing known reads \"tmp_dri\"; did you mean tmp_dir?"),
              bad.out.npos);
    EXPECT_NE(bad.out.find("none\\x1B cannot be read"), bad.out.npos) << "the name that was tried";
    EXPECT_EQ(bad.out.find("installation root"), bad.out.npos) << "the home directory was meant";
    options.env["ToolInfo"] = tree.write("relative", "ToolInfo=none.site\n");
    EXPECT_NE(run({"--check"})
                  .out.find("none.site cannot be read: the chain of files ends here (a "
                            "relative name is meant below the installation root) ["),
              std::string::npos);
    options.env["ToolInfo"] = tree.write("wide", "\xFF\xFE" + std::string("a\0=\0", 4));
    EXPECT_EQ(digest(run({"--check"}).out, tree.path("wide"))[0], "1 error nul-byte");
}

TEST_F(MoxInfo, FindsTheEndsOfAChainAndWhatTheEnvironmentOverrides) {
    const std::string first = tree.write("first", "a=1\nToolInfo=~/second\n");
    tree.write("second", "a=1\nc=1\nc=2\nToolInfo=~/first\n");
    EXPECT_EQ(
        digest(run({"--check"}).out, tree.path("second")),
        (Lines{"3 warning duplicate", "4 warning chain-cycle", "0 errors, 2 warnings, 0 notes"}));
    for (int i = 2; i <= 11; ++i)
        tree.write("f" + std::to_string(i), "ToolInfo=~/f" + std::to_string(i + 1) + "\n");
    tree.write("first", "tmp_dir=x\nplant=1\nToolInfo=~/f2\n");
    options.env["KAZ_TMP_DIR"] = "y";
    options.env["KAZ_TMPDIR"] = "y";
    options.env["KAZ_plant"] = "2";
    options.env["KAZ_PLANT"] = "2";
    options.env["KAZ_X"] = "too short to be near to anything";
    options.env["KAZ_PROGRESS_FD"] = "3";
    const moxkit::Result result = run({"--check"});
    EXPECT_EQ(digest(result.out, tree.path("f10")),
              (Lines{"1 warning chain-too-long", "environment note env-override",
                     "environment note env-override", "environment warning env-near",
                     "environment warning env-near", "0 errors, 3 warnings, 2 notes"}))
        << result.out;
    EXPECT_NE(result.out.find("KAZ_TMP_DIR overrides \"tmp_dir\" of " + first + ":1 ["),
              result.out.npos);
    EXPECT_NE(result.out.find("KAZ_TMPDIR; did you mean KAZ_TMP_DIR? ["), result.out.npos);
    EXPECT_NE(result.out.find("KAZ_plant; did you mean KAZ_PLANT? ["), result.out.npos);
}

TEST_F(MoxInfo, ToolsInstallTheNamesThatTheyRead) {
    tree.mkdir("Suite/bin");
    kit::placeProgram("moxinfo", tree.path("Suite/bin"));
    tree.write("first", "harbour=1\nharbuor=2\n");
    const auto check = [this] {
        return digest(moxkit::run({tree.path("Suite/bin/moxinfo"), "--check"}, options).out,
                      tree.path("first"));
    };
    EXPECT_EQ(check(), (Lines{"0 errors, 0 warnings, 0 notes"}));
    tree.write("Suite/share/mox/variables/plan.list", "% of the planner\n harbour \r\n\n");
    tree.write("Suite/share/mox/variables/plan.text", "harbuor\n");
    EXPECT_EQ(check(), (Lines{"2 warning near-name", "0 errors, 1 warning, 0 notes"}));
}

TEST_F(MoxInfo, TheSampleProjectIsReadWhole) {
    options.cwd = EXAMPLES "/project";
    const moxkit::Result result = run({"-toolinfo", "ToolInfo", "--check"});
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_NE(result.out.find("0 errors, 0 warnings"), result.out.npos);
    EXPECT_EQ(run({"-toolinfo", "ToolInfo", "site_name"}).out, "Harbour plant\n");
}

TEST_F(MoxInfo, ShowsValuesAndExpandsTemplates) {
    options.env["KAZ_A"] = "environment";
    moxkit::Result result = run({"a", "b", "<${a}|${ti.a}|${none}>", "\"${b}\""});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "environment\n2\n<environment|1|>\n\"2\"\n");

    result = run({"-verbose", "b", "none", "empty", "a"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out,
              "% from " + tree.native("first") + "\n2\n% from environment\nenvironment\n");
    EXPECT_EQ(result.err, "moxinfo: none is not defined\nmoxinfo: empty is not defined\n");
}

TEST_F(MoxInfo, WhatItWritesCanBeRead) {
    kit::Random rng;
    std::map<std::string, std::string> values;
    std::string text;
    for (int i = 0; i < 200; ++i) {
        const std::string name = "v" + rng.text(3, "abc.% -");
        values[name.substr(0, name.find_last_not_of(' ') + 1)] =
            "x" + rng.text(6, "=%~$\\\xe9 ") + "x";
    }
    for (const auto& [name, value] : values)
        text += name + " = " + value + "\n";
    options.env["ToolInfo"] = tree.write("random", text);
    EXPECT_EQ(run({"-output", tree.path("written")}).status, 0);
    std::vector<std::string> arguments{"-toolinfo", tree.path("written")};
    std::string expected;
    for (const auto& [name, value] : values) {
        arguments.push_back(name);
        expected += value + "\n";
    }
    EXPECT_EQ(run(arguments).out, expected);
    arguments.insert(arguments.begin(), {"-output", tree.path("written")});
    EXPECT_EQ(run(arguments).status, 0) << "over the file that it starts from";
    EXPECT_EQ(tree.readText("written"), expected);
}

TEST_F(MoxInfo, WrongUseIsExplained) {
    const std::map<std::string, std::vector<std::string>> problems = {
        {"option -output needs a value", {"-verbose", "-output"}},
        {"option -source: enviroment is no file that is read, nor environment, library or "
         "run-time; did you mean environment?",
         {"-source", "enviroment"}},
        {"--origin and --check exclude one another", {"--check", "--origin"}},
        {"option -source does not go with --check", {"--check", "-source", "library"}},
        {"option -product does not go with --origin", {"--origin", "-product", "."}},
        {"there is no place for the argument a", {"--check", "a"}}};
    for (const auto& [problem, arguments] : problems) {
        const moxkit::Result result = run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "moxinfo: " + problem + "\nmoxinfo -help shows how it is used\n");
    }
    const moxkit::Result help = run({"a", "-help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.starts_with("usage: moxinfo [-toolinfo FILE] ")) << help.out;
    EXPECT_NE(help.out.find("\n  -output FILE      write to this file (-o)\n"), help.out.npos);
    EXPECT_EQ(run({"EMTPY", "x"}).err, "moxinfo: EMTPY is not defined; did you mean empty?\n"
                                       "moxinfo: x is not defined\n");
}

TEST_F(MoxInfo, CompletesNamesAndSources) {
    const std::string first = tree.path("first"), second = tree.path("second");
    EXPECT_EQ(run({"--complete", "1", "b", "e"}).out, "empty\t\n");
    EXPECT_EQ(run({"--complete", "0", "TI_l"}).out, "TI_locale\t" + kit::localeOfC() + "\n");
    EXPECT_EQ(run({"--complete", "1", "-source"}).out,
              "environment\t\nlibrary\t\nrun-time\t\n" + first + "\t\n" + second + "\t\n");
    options.env["ToolInfo"] = tree.path("none"); // who types sees nothing of it
    const moxkit::Result none = run({"--complete", "0", "tmp"});
    EXPECT_EQ(none.status, 0);
    EXPECT_EQ(none.out + none.err, "");
}

TEST_F(MoxInfo, TroubleWithFilesIsReported) {
    kit::leaveOutUnderValgrind("what it starts writes elsewhere");
    EXPECT_EQ(run({"-file", tree.path("none")}).err,
              "moxinfo: cannot read " + tree.path("none") + "\n");
    EXPECT_EQ(run({"-output", tree.path("none/x")}).err,
              tree.path("none/x") + ": cannot be written: No such file or directory\n");
    const std::string full = kit::fullDevice();
    if (!full.empty()) {
        EXPECT_EQ(run({"-output", full}).err,
                  full + ": cannot be written: No space left on device\n");
        EXPECT_EQ(run({"-output", full}).status, 1);
    }
    EXPECT_EQ(run({"-source", tree.path("none")}).status, 2) << "no file of the chain";
    const moxkit::Result result = run({"-toolinfo", tree.path("none")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Can't open ToolInfo file: " + tree.native("none") +
                              ",\nis ToolInfo environment variable set correctly?\n");
    // Without standard output nothing of it may end up in the file instead.
    options.closeStdout = true;
    EXPECT_EQ(run({"-output", tree.path("file"), "a"}).status, 0);
    EXPECT_EQ(tree.readText("file"), "1\n");
    for (const char* argument : {"a", "-help", "--describe"}) {
        const moxkit::Result lost = run({argument});
        EXPECT_EQ(lost.status, 1) << argument;
        EXPECT_NE(lost.err.find("standard output: cannot be written"), lost.err.npos);
    }
}

} // namespace
