// SPDX-License-Identifier: Apache-2.0
#include "kit/host.h"
#include "kit/process.h"
#include "kit/random.h"
#include "kit/temp_tree.h"

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
                       {"TOOLINFO", kit::unset},
                       {"ToolInfo", tree.write("first", "a=1\nb=2\nempty=\nToolInfo=~/second\n")}};
        tree.write("second", "b=3\nc=4\nempty=hidden\n");
    }

    kit::Result run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "moxinfo");
        return kit::run(arguments, options);
    }

    kit::TempTree tree;
    kit::RunOptions options;
};

TEST_F(MoxInfo, ShowsEachVariableUnderItsSource) {
    options.env["KAZ_C"] = "two\nlines";
    const std::string first = tree.native("first"), second = tree.native("second");
    const kit::Result result = run({});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "% ToolInfo files:\n%   " + first + "\n%   " + second +
                              "\n% from environment\nc=two lines\n"
                              "% from library\nTI_locale=" +
                              kit::localeOfC() + "\nToolInfo=" + first + "\nToolInfoPath=" + first +
                              " " + second + "\n% from " + first + "\na=1\nb=2\nempty=\n");
    EXPECT_EQ(run({"-source", tree.path("first")}).out, "% from " + first + "\na=1\nb=2\nempty=\n");
    EXPECT_EQ(run({"-source", "environment"}).out, "% from environment\nc=two lines\n");

    tree.write("more", "a=9\nd=5\n");
    const kit::Result more = run({"-file", tree.path("more"), "-source", tree.path("more")});
    EXPECT_EQ(more.out, "% from " + tree.native("more") + "\na=9\nd=5\n");
}

TEST_F(MoxInfo, ShowsValuesAndExpandsTemplates) {
    options.env["KAZ_A"] = "environment";
    kit::Result result = run({"a", "b", "<${a}|${ti.a}|${none}>", "\"${b}\""});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "environment\n2\n<environment|1|>\n\"2\"\n");

    result = run({"-verbose", "b", "none", "empty", "a"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out,
              "% from " + tree.native("first") + "\n2\n% from environment\nenvironment\n");
    EXPECT_EQ(result.err, "moxinfo: none is not defined\nmoxinfo: empty is not defined\n");
}

TEST_F(MoxInfo, WhatItWritesCanBeRead) {
    SCOPED_TRACE(kit::seedText());
    kit::Random rng(kit::seed());
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
        {"unknown option -frob", {"-frob"}},
        {"option -projdir is not for this program", {"a", "-projdir", "x"}},
        {"option -output needs a value", {"-verbose", "-output"}}};
    for (const auto& [problem, arguments] : problems) {
        const kit::Result result = run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "moxinfo: " + problem + "\nmoxinfo -help shows how it is used\n");
    }
    const kit::Result help = run({"a", "-help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.starts_with("usage: moxinfo [-toolinfo FILE] ")) << help.out;
    EXPECT_NE(help.out.find("\n  -output FILE    write to this file (-o)\n"), help.out.npos);
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
    const kit::Result none = run({"--complete", "0", "tmp"});
    EXPECT_EQ(none.status, 0);
    EXPECT_EQ(none.out + none.err, "");
}

TEST_F(MoxInfo, TroubleWithFilesIsReported) {
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
    kit::Result result = run({"-toolinfo", tree.path("none")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Can't open ToolInfo file: " + tree.native("none") +
                              ",\nis ToolInfo environment variable set correctly?\n");
    options.stdoutFile = full;
    result = run({});
    EXPECT_EQ(result.status, full.empty() ? 0 : 1);
    EXPECT_EQ(result.err, full.empty() ? ""
                                       : "standard output: cannot be written: "
                                         "No space left on device\n");
    options.stdoutFile.clear();

    // Without standard output nothing of it may end up in the file instead.
    options.closeStdout = true;
    EXPECT_EQ(run({"-output", tree.path("file"), "a"}).status, 0);
    EXPECT_EQ(tree.readText("file"), "1\n");
    result = run({"a"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("standard output: cannot be written: "), result.err.npos);
}

} // namespace
