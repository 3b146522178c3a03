// SPDX-License-Identifier: Apache-2.0
// Projects that are made. That one builds, passes its tests and runs is tried where the
// library is installed.
#include "kit/host.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

class New : public testing::Test {
protected:
    moxkit::Result make(std::vector<std::string> words) {
        words.insert(words.begin(), {"moxtool", "new"});
        moxkit::RunOptions options;
        options.cwd = tree.path();
        return moxkit::run(words, options);
    }

    /// All below the tree, "/" behind folders.
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(tree.path()))
            names.insert(fs::relative(entry.path(), tree.path()).generic_string() +
                         (entry.is_directory() ? "/" : ""));
        return names;
    }

    moxkit::TempTree tree;
};

TEST_F(New, MakesAProjectOfItsName) {
    const std::string longest = "Z-9_" + std::string(60, 'z');
    for (const std::string& name : {std::string("a"), longest}) {
        const moxkit::Result result = make({name});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out + result.err, "");
        const std::string begin = name + "/";
        for (const std::string& file : files()) {
            EXPECT_TRUE(file.starts_with(begin)) << file;
            if (file.ends_with('/'))
                continue;
            const std::string text = tree.read(file);
            EXPECT_NE(text, "") << file;
            EXPECT_EQ(text.find("@NAME@"), text.npos) << file;
            EXPECT_EQ(text.find("@VERSION@"), text.npos) << file;
        }
        EXPECT_EQ(files().count(begin + name + ".cpp"), 1U);
        EXPECT_NE(tree.read(begin + "CMakeLists.txt").find("project(" + name + " "),
                  std::string::npos);
        if (!kit::hasDrives) {
            EXPECT_EQ(fs::status(tree.path(begin + "ci.sh")).permissions() & fs::perms::owner_exec,
                      fs::perms::owner_exec);
        }
        fs::remove_all(tree.path(name));
    }
}

TEST_F(New, RefusesNamesThatNeedQuotesOrAreTaken) {
    for (const std::string name : {"", "9x", "_x", "-x", "a b", "a.b", "a/b", "..", "a;b", "a$b",
                                   "\xC3\xA9t\xC3\xA9", "moxcopy"}) {
        const moxkit::Result result = make({name});
        EXPECT_EQ(result.status, 2) << name;
        EXPECT_EQ(result.err.find("moxtool new: "), 0U) << result.err;
        EXPECT_EQ(result.out, "");
    }
    EXPECT_EQ(make({std::string(65, 'a')}).status, 2);
    EXPECT_EQ(make({}).status, 2);
    EXPECT_EQ(make({"a", "b"}).status, 2);
    EXPECT_EQ(files(), std::set<std::string>());
}

TEST_F(New, WritesOverNothing) {
    tree.write("file", "text");
    tree.write("full/own", "text");
    tree.mkdir("empty");
    tree.mkdir("other");
    const std::set<std::string> before = files();
    for (const std::string name : {"file", "full", "empty"}) {
        const moxkit::Result result = make({name});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err.find("moxtool new: " + name + ": "), 0U) << result.err;
    }
    EXPECT_EQ(make({"x", "-target", "nowhere"}).status, 1);
    EXPECT_EQ(make({"x", "-target", "file"}).status, 1);
    EXPECT_EQ(files(), before);
    EXPECT_EQ(tree.read("file"), "text");

    EXPECT_EQ(make({"x", "-target", "other"}).status, 0);
    EXPECT_TRUE(tree.exists("other/x/x.cpp"));
}

} // namespace
