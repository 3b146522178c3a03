// moxcopy among links, permissions, signals and full disks.
#include "programs/moxcopy.h"

#include <csignal>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace moxcopy_test;

/// What cannot be copied is told with its path; the rest arrives.
TEST_F(MoxCopy, ListsWhatItCouldNotCopy) {
    makeSystem();
    const auto good = names("plant/brewery");
    fs::create_symlink("nowhere", tree.path("plant/brewery/dangling"));
    fs::create_directory_symlink(tree.path(), tree.path("plant/brewery/upward"));
    ASSERT_EQ(mkfifo(tree.path("plant/brewery/pipe").c_str(), 0600), 0);
    tree.write("plant/brewery/back\\slash", "x");
    auto result = copy({});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(names("copies/brewery"), good);
    for (const char* name : {"dangling", "upward", "pipe", "back\\slash"})
        EXPECT_NE(result.err.find("Not copied: '" + tree.path("plant/brewery/") + name + "' ("),
                  std::string::npos)
            << name;
    EXPECT_TRUE(result.err.ends_with("\n4 failures\n")) << result.err;
    EXPECT_TRUE(onlyCopyIn("copies"));

    // Inside an earlier copy, a link in place of a directory is not followed.
    fs::remove_all(tree.path("copies/brewery/deep"));
    tree.mkdir("outside");
    fs::create_directory_symlink(tree.path("outside"), tree.path("copies/brewery/deep"));
    tree.write("plant/brewery/zero", "no longer empty");
    result = copy({"-Force"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(fs::is_empty(tree.path("outside")));
    EXPECT_EQ(tree.read("copies/brewery/zero"), "no longer empty");
}

TEST_F(MoxCopy, UnreadableDirectoriesFailAndTheirNeighboursDoNot) {
    makeSystem();
    const std::string deep = tree.path("plant/brewery/deep");
    std::vector<std::string> command = {program, "-p", "plant", "-s", "brewery"};
    if (geteuid() == 0) { // Nothing is unreadable to the super user.
        command.insert(command.begin(), {"/usr/bin/setpriv", "--reuid=65534", "--clear-groups"});
        fs::permissions(tree.path(), fs::perms::all);
    }
    fs::permissions(deep, fs::perms::none);
    auto result = runTool(command);
    fs::permissions(deep, fs::perms::owner_all);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Not copied: '" + deep + "' (the directory cannot be read)\n1 failure\n");
    EXPECT_TRUE(tree.exists("copies/brewery/filestore/mashing.1"));
    EXPECT_FALSE(tree.exists("copies/brewery/deep"));
}

TEST_F(MoxCopy, InterruptRemovesWhatThisRunHasMade) {
    for (int i = 0; i < 400; ++i)
        tree.write("plant/brewery/f" + std::to_string(1000 + i), std::string(200'000, 'x'));
    kit::RunOptions options;
    options.signal = SIGINT;
    options.signalAfter = "Copied";
    auto result = copy({"-verbose", "-target", "new/parents"}, options);
    EXPECT_EQ(result.status, 9) << result.out.substr(result.out.size() - 200);
    EXPECT_EQ(result.err, "Cancelled, nothing was copied\n");
    EXPECT_FALSE(tree.exists("new"));

    tree.write("copies/brewery/f1000", "old");
    const auto before = contents(tree, "copies");
    EXPECT_EQ(copy({"-verbose", "-Force"}, options).status, 9);
    EXPECT_EQ(contents(tree, "copies"), before);
}

TEST_F(MoxCopy, FullDiskLeavesWhatWasThere) {
    const std::string disk = tree.mkdir("disk");
    if (mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=256k") != 0)
        GTEST_SKIP() << "no small file system can be made here";
    tree.write("disk/brewery/f1", "old");
    for (int i = 0; i < 20; ++i)
        tree.write("plant/brewery/f" + std::to_string(i), std::string(30'000, 'x'));
    auto result = copy({"-Force", "-target", "disk"});
    const auto after = contents(tree, "disk");
    auto fresh = copy({"-target", "disk/new"});
    const auto afterFresh = contents(tree, "disk");
    umount(disk.c_str());
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("The disk is full, nothing was copied\n"), std::string::npos);
    EXPECT_EQ(after, (std::map<std::string, std::string>{{"brewery", "/"}, {"brewery/f1", "old"}}));
    EXPECT_EQ(fresh.status, 1);
    EXPECT_EQ(afterFresh, after);
}
