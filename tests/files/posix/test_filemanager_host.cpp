// SPDX-License-Identifier: Apache-2.0
// The file manager among links, permissions, special files and exhausted hosts.
#include "files/manager.h"
#include "files/posix/plain_user.h"
#include "files/tree.h"
#include "kit/random.h"
#include "testkit/temp_tree.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace manager_test;

TEST_F(FileManager, WhatCannotBeCopiedIsListed) {
    fs::permissions(tree.path(), fs::perms::all);
    const tree::PlainUser user;
    const auto path = [&](const char* name) { return tree.path(std::string("src/") + name); };
    tree.write("src/good", "x");
    tree.write("src/secret", "x");
    tree.write("src/closed/in", "x");
    tree.write("src/..\\..\\evil", "x");
    tree.write("target", "behind a link");
    fs::permissions(path("secret"), fs::perms::none);
    fs::permissions(path("closed"), fs::perms::none);
    fs::create_symlink("nowhere", path("dangling"));
    fs::create_directory_symlink("..", path("loop"));
    fs::create_symlink("../target", path("link"));
    ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
    tree.mkdir("dst");

    KazFileManager manager(tree.native("src").c_str());
    EXPECT_FALSE(manager.copy(tree.native("dst").c_str(), true));
    Names expected;
    Messages messages;
    for (const std::string name :
         {"secret", "closed", "dangling", "loop", "fifo", "..\\..\\evil"}) {
        expected.insert(tree.native("src") + "\\" + name);
        messages.push_back("Failed to copy '" + name + "'.");
    }
    EXPECT_EQ(errorsOf(manager), expected);
    EXPECT_EQ(sorted(director.messages), sorted(messages));
    EXPECT_EQ(tree.read("dst/src/good"), "x");
    EXPECT_EQ(tree.read("dst/src/link"), "behind a link");
    EXPECT_FALSE(fs::is_symlink(tree.path("dst/src/link")));
    const tree::Snapshot all = tree::snapshot(tree.path("dst"));
    EXPECT_EQ(all.size(), 4u); // src, closed, good, link: nothing half done
    EXPECT_FALSE(tree.exists("evil"));
    fs::permissions(path("closed"), fs::perms::all);
}

TEST_F(FileManager, DestinationsNeedNotBeReadable) {
    fs::permissions(tree.path(), fs::perms::all);
    const tree::PlainUser user;
    tree.write("src/sub/f", "x");
    fs::permissions(tree.mkdir("dst"), fs::perms::owner_write | fs::perms::owner_exec);
    KazFileManager manager(tree.native("src").c_str());
    EXPECT_TRUE(manager.copy(tree.native("dst").c_str(), true));
    EXPECT_TRUE(manager.copy(tree.native("dst").c_str(), "*", true));
    fs::permissions(tree.path("dst"), fs::perms::all);
    EXPECT_EQ(tree.read("dst/src/sub/f"), "x");
    EXPECT_EQ(tree.read("dst/sub/f"), "x");
}

/// Gives what is created in a directory nothing for others, and only reading for the
/// group, whatever the mask says. False where the file system knows no such lists.
bool restrictNewFiles(const std::string& directory) {
    struct Entry {
        std::uint16_t whom, may;
        std::uint32_t id;
    };
    constexpr std::uint32_t nobodyNamed = 0xFFFFFFFF;
    const struct {
        std::uint32_t version = 2;
        Entry owner = {0x01, 7, nobodyNamed}, group = {0x04, 4, nobodyNamed},
              others = {0x20, 0, nobodyNamed};
    } list;
    return ::setxattr(directory.c_str(), "system.posix_acl_default", &list, sizeof list, 0) == 0;
}

TEST_F(FileManager, FilesKeepTheirPermissionsWhateverNewOnesGet) {
    kit::Random random;
    for (int i = 0; i < 60; ++i) {
        const std::string name = "src/" + std::to_string(i);
        tree.write(name, "x");
        const auto mode =
            static_cast<fs::perms>(0400 | (random.oneIn(3) ? 0754 : random.below(0777)));
        fs::permissions(tree.path(name), mode);
    }
    const tree::Snapshot source = tree::snapshot(tree.path("src"));
    KazFileManager manager(tree.native("src").c_str());
    for (const bool restricted : {false, true})
        for (const mode_t mask : {0, 022, 027, 077, 0777}) {
            fs::remove_all(tree.path("dst"));
            tree.mkdir("dst");
            if (restricted && !restrictNewFiles(tree.path("dst")))
                continue;
            const mode_t old = ::umask(mask);
            EXPECT_TRUE(manager.copy(tree.native("dst").c_str(), "*", false));
            ::umask(old);
            EXPECT_EQ(tree::snapshot(tree.path("dst")), source) << restricted << " " << mask;
        }
}

TEST_F(FileManager, WhatCannotBeDeletedIsListed) {
    fs::permissions(tree.path(), fs::perms::all);
    const tree::PlainUser user;
    tree.write("src/fixed/in", "x");
    tree.write("src/good", "x");
    tree.write("src/..\\victim", "x");
    tree.write("victim", "x");
    tree.write("outside/in", "x");
    fs::create_directory_symlink("../outside", tree.path("src/link"));
    fs::permissions(tree.path("src/fixed"), fs::perms::owner_read | fs::perms::owner_exec);
    const std::string src = tree.native("src");
    KazFileManager manager(src.c_str());
    EXPECT_FALSE(manager.destroy(true));
    EXPECT_EQ(errorsOf(manager),
              (Names{src + "\\fixed\\in", src + "\\fixed", src + "\\..\\victim"}));
    EXPECT_TRUE(tree.exists("victim"));
    EXPECT_TRUE(tree.exists("outside/in"));
    EXPECT_FALSE(tree.exists("src/good"));
    EXPECT_FALSE(tree.exists("src/link"));
    fs::permissions(tree.path("src/fixed"), fs::perms::owner_all);
}

TEST_F(FileManager, StaysInsideTheDestination) {
    tree.write("src/sub/f", "x");
    tree.write("src/file", "x");
    tree.write("outside/file", "untouched");
    makeOld(tree.path("outside/file"));
    tree.mkdir("dst/src");
    fs::create_directory_symlink(tree.path("outside"), tree.path("dst/src/sub"));
    fs::create_symlink(tree.path("outside/file"), tree.path("dst/src/file"));
    KazFileManager manager(tree.native("src").c_str());
    EXPECT_FALSE(manager.copy(tree.native("dst").c_str(), true));
    EXPECT_EQ(errorsOf(manager), (Names{tree.native("src/sub/f")}));
    EXPECT_EQ(tree.read("outside/file"), "untouched");
    EXPECT_FALSE(tree.exists("outside/f"));
    EXPECT_EQ(tree.read("dst/src/file"), "x"); // the link was replaced
}

} // namespace
