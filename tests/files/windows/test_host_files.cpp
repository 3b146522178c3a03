// SPDX-License-Identifier: Apache-2.0
// File helpers where the host has drives and file names without case.
#include "tools/files/tifiles.h"

#include "files/tree.h"
#include "testkit/temp_tree.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <windows.h>

namespace {

TEST(HostFiles, HostAndNativeSpellingAreOne) {
    for (const char* path : {R"(C:\x\y)", R"(\\srv\share)", "c:x", R"(\tmp)", "1:x", ""}) {
        EXPECT_STREQ(kazHostPath(path).getValue(), path);
        EXPECT_STREQ(kazNativePath(path).getValue(), path);
    }
    EXPECT_STREQ(kazHostPath("a/b").getValue(), R"(a\b)");
    EXPECT_STREQ(kazNativePath("a/b").getValue(), R"(a\b)");
}

TEST(HostFiles, NamesHaveNoCase) {
    const moxkit::TempTree tree;
    EXPECT_EQ(TI_makedir(tree.native("a/b").c_str()), 0);
    EXPECT_EQ(TI_makedir(tree.native("A/B").c_str()), 0);
    EXPECT_EQ(TI_makedir("C:\\"), 0);
    tree.write("a/sub", "");
    const std::string prefix = tree.native("a") + "\\";
    EXPECT_EQ(tree::listed(prefix + "S*B"), std::set<std::string>{prefix + "sub"});
    EXPECT_EQ(copy_file((prefix + "sub").c_str(), (prefix + "SUB").c_str(), false), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST(HostFiles, CopyKeepsTheAttributeAndLeavesHeldFilesAlone) {
    const moxkit::TempTree tree;
    tree.write("src", "text");
    tree.write("held", "other");
    SetFileAttributesA(tree.path("src").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(copy_file(tree.native("src").c_str(), tree.native("new").c_str(), true), 0);
    EXPECT_TRUE((GetFileAttributesA(tree.path("new").c_str()) & FILE_ATTRIBUTE_READONLY) != 0);
    for (const char* name : {"src", "new"})
        SetFileAttributesA(tree.path(name).c_str(), FILE_ATTRIBUTE_NORMAL);
    const HANDLE held = CreateFileA(tree.path("held").c_str(), GENERIC_READ, FILE_SHARE_READ,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(copy_file(tree.native("src").c_str(), tree.native("held").c_str(), false), -1);
    EXPECT_EQ(errno, EACCES);
    CloseHandle(held);
    EXPECT_EQ(tree.read("held"), "other");
}

} // namespace
