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
        const kit::Result result = run({"-source", source, "-output", tree.path(nowhere)});
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.err.find("cannot be written: "), std::string::npos) << result.err;
    }
    EXPECT_EQ(run({"-source", source, "-output", "/dev/full"}).err,
              "/dev/full: cannot be written: No space left on device\n");
    options.stdoutFile = "/dev/full";
    EXPECT_EQ(run({"-file", file}).status, 1);
    options.stdoutFile.clear();
    options.closeStdout = true;
    EXPECT_EQ(run({"-file", file}).signal, 0); // and nothing it opens takes the place
    options.closeStdout = false;
    EXPECT_EQ(run({"-file", file}).out, "1 text\n");
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(tree.path()))
        names.push_back(entry.path().filename());
    EXPECT_EQ(names.size(), 3U) << testing::PrintToString(names);
}

} // namespace
