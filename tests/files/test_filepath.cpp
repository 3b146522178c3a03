// SPDX-License-Identifier: Apache-2.0
// The search path.
#include "tools/config/KazFilePath.h"

#include "testkit/env.h"
#include "testkit/temp_tree.h"
#include "tools/config/vstring.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

std::vector<std::string> values(const KazStringColl& found) {
    std::vector<std::string> result;
    for (int i = 0; i < found.getSize(); ++i)
        result.push_back(found[i].getValue());
    return result;
}

TEST(FilePath, NamesAreTrimmedCopiedAndComparedWithoutCase) {
    EXPECT_STREQ(KazFilePath("; a ;;b c;\t;").getText().getValue(), "a;b c");
    EXPECT_TRUE(KazFilePath(nullptr).isEmpty());
    KazFilePath path("a;d;D;x");
    const KazFilePath copy = path;
    EXPECT_TRUE(path.contains("A") && path.remove("D"));
    EXPECT_STREQ(path.getText().getValue(), "a;x");
    path.clear();
    EXPECT_TRUE(path.isEmpty() && copy.getSize() == 4);
}

TEST(FilePath, FindsInOrderAndExpandsLate) {
    const moxkit::TempTree tree;
    const moxkit::ScopedEnv home("HOME", tree.path("home").c_str());
    tree.write("home/t/one", "");
    tree.write("two/one", "");
    tree.write("two/sub/deep", "");
    tree.mkdir("home/t/deep");
    tree.write("two/deep", "");
    KazFilePath path("missing;~/t;${filepath_test}\\two;");
    vstring_set_simple_var("filepath_test", tree.native().c_str());
    EXPECT_STREQ(path.getExpandedDir(1).getValue(), tree.native("home/t").c_str());
    EXPECT_EQ(path.find("one").getValue(), tree.native("home/t/one"));
    EXPECT_EQ(path.find("sub/deep").getValue(), tree.native("two/sub/deep"));
    EXPECT_EQ(path.find("deep").getValue(), tree.native("two/deep")); // no directory
    EXPECT_EQ(path.findDirectory("deep").getValue(), tree.native("home/t/deep"));
    EXPECT_TRUE(path.find("nowhere").isEmpty());
    EXPECT_TRUE(path.find("").isEmpty());
    EXPECT_TRUE(path.find(nullptr).isEmpty());

    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(tree.path());
    const KazFilePath unknown("${filepath_unknown}; .");
    EXPECT_STREQ(unknown.findDirectory("two").getValue(), ".\\two");
    std::filesystem::current_path(before);

    path.append(tree.native("two").c_str());
    KazStringColl found;
    EXPECT_EQ(path.findAll("one", found), 2);
    EXPECT_EQ(values(found),
              (std::vector<std::string>{tree.native("home/t/one"), tree.native("two/one")}));
    EXPECT_EQ(path.findAll("one", found), 2);       // whatever is there already
    EXPECT_EQ(path.findMatching("?*e*", found), 2); // one of home/t, deep of two
    EXPECT_EQ(found[4].getValue(), tree.native("home/t/one"));
    EXPECT_EQ(found[5].getValue(), tree.native("two/deep"));
}

TEST(FilePath, AVariableMayHoldAList) {
    const moxkit::TempTree tree;
    const moxkit::ScopedEnv home("HOME", tree.path().c_str());
    tree.write("a/one", "");
    tree.write("b/one", "");
    tree.write("b/two", "");
    vstring_set_simple_var("filepath_list", "~/a; ;~\\b;");
    const KazFilePath path("none;${filepath_list};b");
    EXPECT_EQ(path.getSize(), 3);
    EXPECT_EQ(path.getExpandedDir(1).getValue(), tree.native("a") + ";" + tree.native("b"));
    EXPECT_STREQ(path.getText().getValue(), "none;${filepath_list};b");
    EXPECT_EQ(path.find("one").getValue(), tree.native("a/one"));
    EXPECT_EQ(path.find("two").getValue(), tree.native("b/two"));
    KazStringColl found;
    EXPECT_EQ(path.findAll("one", found), 2);
    EXPECT_EQ(path.findMatching("*o*", found), 2);
    EXPECT_EQ(found[2].getValue(), tree.native("a/one"));
}

TEST(FilePath, ExplicitNamesAreNotSearchedFor) {
    const moxkit::TempTree tree;
    const moxkit::ScopedEnv home("HOME", tree.path("home").c_str());
    tree.write("dir/f", "");
    tree.write("home/f", "");
    const KazFilePath path(tree.native("dir").c_str());
    EXPECT_EQ(path.find(tree.path("home/f").c_str()).getValue(), tree.native("home/f"));
    EXPECT_EQ(path.find("~/f").getValue(), tree.native("home/f"));
    EXPECT_TRUE(path.find("./f").isEmpty());
    EXPECT_TRUE(path.find("C:f").isEmpty());
    KazStringColl found;
    EXPECT_EQ(path.findMatching("~\\*", found), 1);
}

} // namespace
