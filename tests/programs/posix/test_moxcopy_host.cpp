// SPDX-License-Identifier: Apache-2.0
// moxcopy among links, permissions and full disks.
#include "programs/moxcopy.h"
#include "programs/posix/plain_user.h"

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
    // No name begins a line of its own or drives the terminal.
    fs::create_symlink("nowhere", tree.path("plant/brewery/\x1b[2J\nNot copied: 'x"));
    tree.write("plant/brewery/\xc2\x9b\x1b]0;title\a", "x");
    result = copy({"-verbose", "-target", "t"});
    EXPECT_EQ((result.out + result.err).find_first_of("\x1b\a\x9b"), std::string::npos);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 6) << result.err;

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

TEST_F(MoxCopy, ClosedDirectoriesFailAndTheirNeighboursDoNot) {
    makeSystem();
    fs::permissions(tree.path(), fs::perms::all);
    const std::string deep = tree.path("plant/brewery/deep");
    const std::vector<std::string> command = asPlainUser({program, "-p", "plant", "-s", "brewery"});
    fs::permissions(deep, fs::perms::none);
    auto result = runTool(command);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Not copied: '" + deep + "' (the directory cannot be read)\n1 failure\n");
    EXPECT_TRUE(tree.exists("copies/brewery/filestore/mashing.1"));
    EXPECT_FALSE(tree.exists("copies/brewery/deep"));

    fs::remove_all(tree.path("copies"));
    fs::permissions(tree.mkdir("copies"), fs::perms::owner_read | fs::perms::owner_exec);
    result = runTool(command);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "Cannot write '" + tree.path("copies/brewery") + "': Permission denied\n");
    std::vector<std::string> further = command;
    further.insert(further.end(), {"-target", "copies/further"});
    EXPECT_EQ(runTool(further).err,
              "Cannot write '" + tree.path("copies/further/brewery") + "': Permission denied\n");
    fs::permissions(tree.path("plant"), fs::perms::none);
    result = runTool(command);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.err.starts_with("There is no system 'brewery'")) << result.err;
}

TEST_F(MoxCopy, HostileSurroundingsEndInAMessage) {
    makeSystem();
    const std::string tooLong(100'000, 'x');
    std::string tooDeep;
    while (tooDeep.size() < 5000)
        tooDeep += "/" + std::string(250, 'd');
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"-target", tooLong}, {"-target", tree.path() + tooDeep}, {"-filter", tooLong}}) {
        auto result = copy(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.err, "");
    }
    EXPECT_FALSE(tree.exists(std::string(250, 'd')));
    EXPECT_EQ(runTool({program, "-p", tooLong, "-s", "brewery", "-target", "t"}).status, 1);
    EXPECT_EQ(runTool({program, "-p", "plant", "-s", tooLong, "-target", "t"}).status, 1);
    EXPECT_EQ(
        runTool({"/bin/sh", "-c",
                 "exec " + program + " -p plant -s brewery -target t -verbose 0<&- 1>&- 2>&-"})
            .status,
        0);
    EXPECT_EQ(contents(tree, "t/brewery"), contents(tree, "plant/brewery"));
    EXPECT_EQ(runTool({"/bin/sh", "-c",
                       "mkdir gone && cd gone && rmdir ../gone && exec " + program + " -p '" +
                           tree.path("plant") + "' -s brewery -target u"})
                  .status,
              1);
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
