// SPDX-License-Identifier: Apache-2.0
#include "tools/config/toolinfo.h"

#include "tools/config/typed_value.h"

#include "probe.h"

#include "kit/host.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"
#include "util/owned.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

namespace {

TEST(ToolInfoFiles, VariablesOutliveMain) {
    moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.env = {{"ToolInfo", tree.write("first", "x=1\nsystem=s\n")},
                   {"PROBE_EDGE", tree.path("edge")}};
    // Without an application nothing can be assigned, and no command line is read.
    const std::string others = " =s - -1 - 00";
    EXPECT_EQ(ask({"cont\tedge"}, options, {"-projdir", "p"}), (Lines{"=early"}));
    EXPECT_EQ(tree.read("edge"), "=early" + others);
    ask({}, options);
    EXPECT_EQ(tree.read("edge"), "=early" + others);
    tree.write("first", "edge=file\nsystem=s\n");
    ask({}, options); // reads the files after main only
    EXPECT_EQ(tree.read("edge"), "=file" + others);
}

// ------------------------------------------------------ where the file is found

/// An installation of its own: library and probe in a "BIN" directory.
class Suite {
public:
    Suite() {
        tree.mkdir("Suite/BIN");
        tree.mkdir("home");
        kit::placeProgram("config_probe", tree.path("Suite/BIN"));
        options.env = {
            {"HOME", tree.path("home")}, {"ToolInfo", moxkit::unset}, {"TOOLINFO", moxkit::unset}};
    }

    std::string probe() const { return tree.path("Suite/BIN/config_probe"); }
    moxkit::Result start() {
        moxkit::RunOptions more = options;
        more.input = "init\n";
        return moxkit::run({probe()}, more);
    }
    Lines answers(const Lines& script) { return ask(script, options, {}, probe()); }

    moxkit::TempTree tree;
    moxkit::RunOptions options;
};

TEST(ToolInfoSearch, LooksInTheHomeDirectoryThenInTheInstallation) {
    Suite suite;
    const auto found = [&suite] { return suite.answers({"cont\twho", "name"}); };

    EXPECT_EQ(suite.start().err, "ToolInfo environment variable is not set\n");
    EXPECT_EQ(suite.start().status, 1);

    suite.tree.write("Suite/ToolInfo", "who=root\n");
    EXPECT_EQ(found(), (Lines{"=root", "=" + suite.tree.native("Suite/ToolInfo")}));
    suite.tree.write("Suite/ToolInfo.W32NTX86", "who=platform\n");
    EXPECT_EQ(found(), (Lines{"=platform", "=" + suite.tree.native("Suite/ToolInfo.W32NTX86")}));
    // A directory is no candidate, nor is a device that would open.
    suite.tree.mkdir("home/ToolInfo");
    EXPECT_EQ(found()[0], "=platform");
    std::filesystem::remove(suite.tree.path("home/ToolInfo"));
    std::error_code ignored;
    std::filesystem::create_symlink("/dev/null", suite.tree.path("home/ToolInfo"), ignored);
    EXPECT_EQ(found()[0], "=platform");
    std::filesystem::remove(suite.tree.path("home/ToolInfo"));
    suite.tree.write("home/ToolInfo", "who=home\n");
    EXPECT_EQ(found(), (Lines{"=home", "=" + suite.tree.native("home/ToolInfo")}));

    // A variable is final, whatever else there is; one name beats the other.
    suite.tree.write("Suite/conf/extra", "who=TOOLINFO\n");
    suite.tree.write("home/mine", "who=ToolInfo\n");
    if (kit::hasDrives)
        suite.options.env.erase("ToolInfo"); // one variable there, whatever its case
    suite.options.env["TOOLINFO"] = "conf/extra";
    EXPECT_EQ(found(), (Lines{"=TOOLINFO", "=" + suite.tree.native("Suite/conf/extra")}));
    suite.options.env["ToolInfo"] = "~/mine";
    EXPECT_EQ(found(), (Lines{"=ToolInfo", "=" + suite.tree.native("home/mine")}));
    suite.options.env["ToolInfo"] = "~/none";
    EXPECT_EQ(suite.start().err, "Can't open ToolInfo file: ~/none,\n"
                                 "is ToolInfo environment variable set correctly?\n");
    EXPECT_EQ(suite.start().status, 1);
}

TEST(ToolInfoSearch, TheDirectoryAboveBinIsTheRoot) {
    Suite suite;
    const std::string suiteDir = suite.tree.native("Suite");
    EXPECT_EQ(suite.answers({"root", "bin"}), (Lines{"=" + suiteDir, "=" + suiteDir + "\\BIN"}));
    std::filesystem::rename(suite.tree.path("Suite/BIN"), suite.tree.path("Suite/tools"));
    const Lines moved =
        ask({"root", "bin"}, suite.options, {}, suite.tree.path("Suite/tools/config_probe"));
    EXPECT_EQ(moved, (Lines{"=" + suiteDir.substr(0, suiteDir.find('\\') + 1),
                            "=" + suiteDir + "\\tools"}));
}

// --------------------------------------------------------------- in this process

/// The one fatal error is recorded and returns: the rest must work all the same.
class ToolInfo : public testing::Test {
protected:
    moxkit::TempTree tree;
    moxkit::ScopedEnv toolInfo{"ToolInfo", "/no/such/file"};
    moxkit::RecordingDirector director;
};

TEST_F(ToolInfo, RefusesWhatIsNotThere) {
    EXPECT_EQ(TI_Var(nullptr), -1);
    EXPECT_EQ(TI_Vasg(nullptr, "x"), -1);
    EXPECT_EQ(TI_Vasg("null", nullptr), 0);
    EXPECT_EQ(TI_Vcont("null"), nullptr);
    for (const char* none : {static_cast<const char*>(nullptr), "/no/such/file", "/dev/null"})
        EXPECT_EQ(TI_V_user_file(none, true), -1);
    EXPECT_EQ(TI_EnvVcont(nullptr), nullptr);
    EXPECT_EQ(TI_SameEnvVcont(nullptr), nullptr);
    EXPECT_EQ(TI_EnvVsource(nullptr, nullptr), KazUndefined);
    EXPECT_EQ(TI_Name(nullptr), -1);
    EXPECT_STREQ(TI_Vfile(-1), "");
    TI_Vwalk(nullptr, nullptr);
}

TEST_F(ToolInfo, TellsWhatTheEnvironmentHides) {
    KazString file = "before";
    TI_Vasg("hidden", "");
    TI_Var("hidden=by that");
    TI_Var("shown=too");
    const moxkit::ScopedEnv hides("KAZ_HIDDEN", "x"), too("KAZ_SHOWN", "x");
    for (const char* name : {"hidden", "shown"})
        EXPECT_EQ(TI_EnvVsource(name, &file), KazEnvironment);
    EXPECT_EQ(TI_Vsource("hidden", &file), KazRunTime);
    EXPECT_EQ(TI_Vsource("shown", &file), KazDefined);
    EXPECT_STREQ(file, "");
    EXPECT_EQ(TI_Vsource(nullptr, nullptr), KazUndefined);
}

TEST_F(ToolInfo, ExpandsTheHomeDirectoryOnly) {
    const std::string home = tree.native();
    {
        const moxkit::ScopedEnv variable("HOME", (tree.path() + "/").c_str());
        EXPECT_EQ(_TI_hm("~"), home + "\\");
        EXPECT_EQ(_TI_hm("~/"), home + "\\");
        EXPECT_EQ(_TI_hm("~\\a/b"), home + "\\a/b");
        EXPECT_EQ(_TI_hm("~//a"), home + "\\/a");
        for (const char* path : {"", "~user", "a~", "/~", "."})
            EXPECT_EQ(_TI_hm(path), path) << "the same pointer";
        EXPECT_STREQ(_TI_hm(nullptr), "");
        TI_userdir(nullptr, 1);
        EXPECT_EQ(take(const_cast<char*>(kazGetUserHomeDir())), home + "\\");

        TI_Vasg("dir", "~/sub");
        EXPECT_EQ(TI_Vcont("dir"), home + "\\sub");
        TI_Var("dir2=~/sub");
        EXPECT_STREQ(TI_Vcont("dir2"), "~/sub") << "files are not expanded";

        const int length = static_cast<int>(home.size()) + 2;
        for (const int size : {length + 1, length, 0, -1}) {
            std::string buffer = "~/x" + std::string(500, '\0');
            TI_userdir(buffer.data(), size);
            EXPECT_EQ(buffer.c_str(), size > length ? home + "\\x" : "~/x") << size;
        }
    }
    for (const char* none : {static_cast<const char*>(nullptr), "/no/such/directory"}) {
        const moxkit::ScopedEnv variable("HOME", none);
        EXPECT_NE(std::string(_TI_hm("~\\x")).substr(0, 3), "\\no");
    }
    moxkit::ScopedEnv top("HOME", "/");
    EXPECT_STREQ(_TI_hm("~/x"), "\\x");
    // An argument in the result's own buffer.
    tree.mkdir("~");
    const moxkit::ScopedEnv odd("HOME", "~");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(tree.path());
    EXPECT_STREQ(_TI_hm(_TI_hm("~/a/fairly/long/path/below/the/home/directory")),
                 "~\\a/fairly/long/path/below/the/home/directory");
    std::filesystem::current_path(before);
}

TEST_F(ToolInfo, ReadsYesAndNo) {
    const std::map<std::string, int> answers = {
        {"", -1},      {"  ", -1}, {"1", 1},     {"yes", 1},  {" ja", 1},  {"True", 1},
        {"t", 1},      {"on", 1},  {"\tON", 1},  {"one", -1}, {"onx", -1}, {"0", 0},
        {"No", 0},     {"n", 0},   {"FALSE", 0}, {"off", 0},  {"Off", 0},  {"offx", -1},
        {"maybe", -1}, {"2", -1},  {"\r\n1", 1}};
    for (const auto& [text, answer] : answers) {
        SCOPED_TRACE(text);
        EXPECT_EQ(TI_yesorno(text.c_str(), false), answer > 0);
        EXPECT_EQ(TI_yesorno(text.c_str(), true), answer != 0);
        EXPECT_EQ(TI_yes(text.c_str()), answer != 0);
        EXPECT_EQ(TI_no(text.c_str()), answer > 0);
        bool value = answer == 0; // what is neither leaves it alone
        EXPECT_EQ(kaz_check_boolean(text.c_str(), &value),
                  answer < 0 ? kaz_value_malformed : kaz_value_good);
        EXPECT_EQ(value, answer > 0);
    }
    EXPECT_TRUE(TI_yes(nullptr));
    EXPECT_FALSE(TI_no(nullptr));
    EXPECT_EQ(kaz_check_boolean(nullptr, nullptr), kaz_value_missing);
}

} // namespace
