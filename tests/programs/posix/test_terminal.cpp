// SPDX-License-Identifier: Apache-2.0
// Names and values from outside on a terminal: none begins a line of its own or moves the
// cursor, whatever program shows it.
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

/// A line end with a message of somebody else's, escapes in both widths, a byte that is no
/// text and a change of direction.
const std::string evil = "x\nmoxinfo: all is well\r\x1b[2J\x9b\xC2\x9B"
                         "7m\xE2\x80\xAE\x7f";
const std::string shown = "x\\x0Amoxinfo: all is well\\x0D\\x1B[2J\\x9B\\u{009B}7m\\u{202E}\\x7F";

class Terminal : public testing::Test {
protected:
    Terminal() {
        options.env = {{"HOME", tree.path()},
                       {"LC_ALL", "C"},
                       {"TOOLINFO", moxkit::unset},
                       {"ToolInfo", tree.write("ToolInfo", "a=b\n")}};
        options.pty = true;
    }

    /// Runs a program; nothing of what it shows may drive the terminal.
    moxkit::Result run(const std::vector<std::string>& arguments) {
        moxkit::Result result = moxkit::run(arguments, options);
        result.out.erase(std::remove(result.out.begin(), result.out.end(), '\r'),
                         result.out.end()); // from the terminal itself
        for (const std::string& text : {result.out, result.err}) {
            EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](unsigned char c) {
                return c == '\n' || (c >= ' ' && c < 0x7F);
            })) << testing::PrintToString(text);
            EXPECT_EQ(("\n" + text).find("\nmoxinfo: all is well"), std::string::npos);
        }
        return result;
    }

    moxkit::TempTree tree;
    moxkit::RunOptions options;
};

TEST_F(Terminal, MoxinfoShowsValuesOfTheEnvironment) {
    options.env["KAZ_A"] = evil;
    EXPECT_EQ(run({"moxinfo", "a"}).out, shown + "\n");
    EXPECT_EQ(run({"moxinfo", "<${a}>"}).out, "<" + shown + ">\n");
    EXPECT_NE(run({"moxinfo"}).out.find("a=x moxinfo: all is well \\x1B[2J"), std::string::npos);
    options.pty = false; // what can be read back stays as it is
    EXPECT_EQ(moxkit::run({"moxinfo", "a"}, options).out, evil + "\n");
}

TEST_F(Terminal, ArgumentsThatAreQuotedInMessages) {
    EXPECT_EQ(run({"moxinfo", evil}).err, "moxinfo: " + shown + " is not defined\n");
    EXPECT_EQ(run({"moxinfo", "-file", evil}).err, "moxinfo: cannot read " + shown + "\n");
    EXPECT_TRUE(run({"moxinfo", "-" + evil})
                    .err.starts_with("moxinfo: unknown option -" + shown + "\nmoxinfo -help"));
    EXPECT_EQ(run({"moxinfo", "-output", "none/" + evil, "a"}).err,
              "none/" + shown + ": cannot be written: No such file or directory\n");
    EXPECT_EQ(run({"moxmsg", "-file", evil}).err,
              shown + ": cannot be read: No such file or directory\n");
    EXPECT_TRUE(run({"moxmsg", "-file", "f", evil})
                    .err.starts_with("moxmsg: what is " + shown + " for?\nmoxmsg -help"));
}

TEST_F(Terminal, NamesOfFilesAndTextsOfCatalogs) {
    const std::string source = tree.write(evil, "1 \x1b[2J\xC2\x9B\xE2\x80\xAE\xE9\n");
    EXPECT_EQ(run({"moxmsg", "-source", source, "-output", tree.path("file")}).status, 0);
    EXPECT_EQ(run({"moxmsg", "-file", tree.path("file")}).out,
              "1 \\x1b[2J\\u{009B}\\u{202E}\\xE9\n");
    tree.write(evil, "1 \\\x1b\nno number\x1b\n");
    const moxkit::Result wrong = run({"moxmsg", "-source", source});
    EXPECT_EQ(wrong.status, 1);
    EXPECT_NE(wrong.err.find(shown + ":1: \\\\x1B is no escape\n"), std::string::npos) << wrong.err;
    EXPECT_EQ(std::count(wrong.err.begin(), wrong.err.end(), '\n'), 2) << wrong.err;
    options.env["ToolInfo"] = evil;
    options.ptyErrors = true;
    EXPECT_EQ(run({"moxinfo", "a"}).out,
              "Can't open ToolInfo file: " + shown +
                  ",\nis ToolInfo environment variable set correctly?\n");
    options.env["ToolInfo"] = tree.write("by/" + evil, "a=b\n");
    EXPECT_NE(run({"moxinfo"}).out.find("% from "), std::string::npos);
    tree.write("by/" + evil, "a=b\n\x1b[2J=\x9b\nToolInfo=\x1b[2J\n");
    for (const char* word : {"--origin", "--check"})
        EXPECT_NE(run({"moxinfo", word}).out.find("\\x1B[2J"), std::string::npos);
}

} // namespace
