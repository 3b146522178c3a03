// SPDX-License-Identifier: Apache-2.0
// moxmsg's output among links, permissions and full disks.
#include "programs/moxmsg.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace moxmsg_test;

TEST_F(MoxMsg, OutputIsWholeOrAsItWas) {
    const std::string file = tree.path("file");
    const std::string source = tree.write("source", "1 text\n");
    compile("1 text\n");
    fs::permissions(file, fs::perms::owner_read | fs::perms::group_read);
    fs::create_symlink("file", tree.path("link"));
    EXPECT_EQ(run({"-source", source, "-output", tree.path("link")}).status, 0);
    EXPECT_TRUE(fs::is_symlink(tree.path("link")));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::group_read);
    EXPECT_EQ(run({"-file", file}).out, "1 text\n");

    for (const char* nowhere : {"none/file", "file/below", ""}) {
        const moxkit::Result result = run({"-source", source, "-output", tree.path(nowhere)});
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.err.find("cannot be written: "), std::string::npos) << result.err;
    }
    EXPECT_EQ(run({"-source", source, "-output", "/dev/full"}).err,
              "/dev/full: cannot be written: No space left on device\n");
    EXPECT_EQ(run({"-file", file}).out, "1 text\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(tree.path()), fs::directory_iterator()), 3);
}

TEST_F(MoxMsg, OutputTakesOverPermissionsButNoPrivileges) {
    const std::string source = tree.write("source", "1 text\n");
    const std::string file = tree.write("file", "before");
    fs::create_symlink("not/yet", tree.path("link"));
    fs::create_directory(tree.path("not"));
    for (const unsigned mode : {06755U, 0600U, 0666U}) {
        fs::permissions(file, static_cast<fs::perms>(mode));
        EXPECT_EQ(run({"-source", source, "-output", file}).status, 0);
        EXPECT_EQ(fs::status(file).permissions(), static_cast<fs::perms>(mode & 0777));
    }
    EXPECT_EQ(run({"-source", source, "-output", tree.path("link")}).status, 0);
    EXPECT_EQ(tree.read("not/yet"), tree.read("file"));
    EXPECT_TRUE(fs::is_symlink(tree.path("link")));
}

TEST_F(MoxMsg, ALimitOfFileSizesIsAReasonAndNoEnd) {
    const std::string source = tree.write("source", "1 text\n");
    tree.write("file", "before");
    options.cwd = tree.path();
    const std::string command =
        "ulimit -f 0; exec " + moxkit::binDirectory() + "/moxmsg -source source -output ";
    for (const std::string name : {"file", "other"}) {
        const moxkit::Result result = moxkit::run({"/bin/sh", "-c", command + name}, options);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, name + ": cannot be written: File too large\n");
    }
    EXPECT_EQ(tree.read("file"), "before");
    EXPECT_EQ(std::distance(fs::directory_iterator(tree.path()), fs::directory_iterator()), 2);
}

} // namespace
