// SPDX-License-Identifier: Apache-2.0
// File helpers where the host has links, permissions and one root.
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"

#include "files/tree.h"
#include "testkit/temp_tree.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using tree::listed;
using Names = std::set<std::string>;

TEST(HostFiles, HostAndNativeSpelling) {
    EXPECT_STREQ(kazHostPath("\\tmp\\x/y").getValue(), "/tmp/x/y");
    EXPECT_STREQ(kazNativePath("/tmp/x").getValue(), "\\tmp\\x");
    for (const char* nothing : {"C:\\x", "c:x", "\\\\srv\\share", "//srv/share"})
        EXPECT_TRUE(kazHostPath(nothing).isEmpty()) << nothing;
    EXPECT_STREQ(kazHostPath("1:x").getValue(), "1:x");
}

TEST(HostFiles, RealDirectoriesAreNoLinks) {
    const moxkit::TempTree tree;
    tree.mkdir("d");
    tree.write("f", "");
    fs::create_directory_symlink("d", tree.path("link"));
    EXPECT_EQ(TI_makedir(tree.native("link/made").c_str()), 0);
    for (const char* yes : {"d", "d/", "link/../d", "d/made", ""})
        EXPECT_TRUE(TI_isRealDirectory(tree.native(yes).c_str())) << yes;
    for (const char* no : {"f", "link", "link/", "link//", "missing"})
        EXPECT_FALSE(TI_isRealDirectory(tree.native(no).c_str())) << no;
    EXPECT_TRUE(TI_isRealDirectory("/"));
    EXPECT_FALSE(TI_isRealDirectory(nullptr));
}

/// No name may look as if it were elsewhere.
TEST(HostFiles, ListingStaysInTheDirectory) {
    const moxkit::TempTree tree;
    for (const char* name : {"~", "c:x", "a", "sub:x", "back\\slash", "\xff\xfe"})
        tree.write(name, "");
    const fs::path before = fs::current_path();
    fs::current_path(tree.path());
    EXPECT_EQ(listed("?"), (Names{"a", ".\\~", "."}));
    EXPECT_EQ(listed("./c*"), Names{".\\c:x"});
    EXPECT_EQ(listed("c:*"), Names{}); // a drive
    EXPECT_EQ(listed("sub:*"), Names{"sub:x"});
    EXPECT_EQ(listed("b*"), Names{});
    EXPECT_EQ(listed("??"), (Names{"..", "\xff\xfe"}));
    fs::current_path(before);
}

/// A pipe under the probe's name, which nobody writes to.
TEST(HostFiles, TwoDirectoriesAreComparedWithoutWaiting) {
    const moxkit::TempTree tree;
    tree.mkdir("one");
    tree.mkdir("two");
    const std::string probe = "/_tmp" + std::to_string(::getpid());
    const std::string pipe = tree.path("two") + probe;
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ::alarm(20);
    const auto compare = [&](const char* a, const char* b) {
        return kazSamePathName(tree.native(a).c_str(), tree.native(b).c_str());
    };
    EXPECT_EQ(compare("one", "two"), 1); // it could be read
    EXPECT_EQ(compare("two", "one"), 0);
    ::alarm(0);
    EXPECT_TRUE(fs::is_empty(tree.path("one")));
    EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST(HostFiles, CopyKeepsPermissions) {
    const moxkit::TempTree tree;
    const mode_t mask = ::umask(077);
    for (const std::size_t size : {10, 100000}) {
        tree.write("src", std::string(size, 'x'));
        tree.write("old", "what was there");
        fs::remove(tree.path("new"));
        fs::permissions(tree.path("src"), static_cast<fs::perms>(0754));
        for (const char* target : {"old", "new"}) {
            EXPECT_EQ(copy_file(tree.native("src").c_str(), tree.native(target).c_str(), false), 0);
            EXPECT_EQ(fs::status(tree.path(target)).permissions(), static_cast<fs::perms>(0754));
        }
    }
    ::umask(mask);
    // A file whose size says nothing.
    EXPECT_EQ(copy_file("/proc/version", tree.native("version").c_str(), false), 0);
    EXPECT_EQ(tree.read("version"), tree::contents("/proc/version"));
}

TEST(HostFiles, CopyDealsWithLinksAndSpecialFiles) {
    const moxkit::TempTree tree;
    tree.write("f", "text");
    tree.write("g", "other");
    fs::create_hard_link(tree.path("f"), tree.path("hard"));
    fs::create_symlink("f", tree.path("link"));
    fs::create_symlink("nowhere", tree.path("dangling"));
    ASSERT_EQ(::mkfifo(tree.path("fifo").c_str(), 0600), 0);
    const tree::Snapshot before = tree::snapshot(tree.path());
    const auto copied = [&](const char* source, const char* target) {
        errno = 0;
        copy_file(tree.native(source).c_str(), tree.native(target).c_str(), false);
        return errno;
    };
    EXPECT_EQ(copied("f", "hard"), EINVAL);
    EXPECT_EQ(copied("link", "f"), EINVAL);
    EXPECT_EQ(copied("fifo", "new"), EINVAL); // and does not wait for a writer
    EXPECT_EQ(copied("dangling", "new"), ENOENT);
    EXPECT_EQ(copied("f", "g/new"), ENOTDIR);
    EXPECT_EQ(tree::snapshot(tree.path()), before);
    // A link in the target's place gives way; what it points to stays.
    EXPECT_EQ(copy_file(tree.native("g").c_str(), tree.native("link").c_str(), false), 0);
    EXPECT_EQ(tree.read("f"), "text");
    EXPECT_EQ(tree.read("link"), "other");
}

} // namespace
