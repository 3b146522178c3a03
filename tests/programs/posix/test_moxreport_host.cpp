// SPDX-License-Identifier: Apache-2.0
// Reports of projects that mean harm.
#include "programs/moxreport.h"
#include "programs/posix/plain_user.h"
#include "tools/files/tistatus.h"

#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace moxreport_test;
namespace fs = std::filesystem;

TEST_F(MoxReport, NamesAreNeitherMarkupNorCommands) {
    const std::string evil = "x\n\x1b]0;t\x07<script>alert(1)<\xE2\x80\xAE\xff";
    tree.write("plant/" + evil + "/" + evil + ".dgm", "");
    tree.write("plant/" + evil + "/filestore/" + evil + ".\x1b[2J", "");
    tree.write("plant/s/back\\slash/${HOME} `id`", "");
    for (const std::string format : {"html", "rtf", "mif", "interleaf"}) {
        const moxkit::Result result = run({"-p", "plant", "-path", "-formats", format});
        EXPECT_EQ(result.status, 0) << result.err;
        for (const std::string bad : {"\x1b", "\xE2\x80\xAE"})
            EXPECT_EQ(result.out.find(bad), result.out.npos) << format;
        EXPECT_TRUE(format != "html" || result.out.find("<script") == result.out.npos);
    }
    expectInOrder(textOf(), {"back\\slash", "${HOME} `id`",
                             "System x\\x0A\\x1B]0;t\\x07&lt;script&gt;alert(1)&lt;\\u{202E}\\xFF",
                             "\\x1B[2J"});
    options.pty = true;
    for (const std::vector<std::string>& more :
         {std::vector<std::string>{"-o", "r.html", "-v"}, {"-s", evil}}) {
        std::vector<std::string> line = {"-p", "plant"};
        line.insert(line.end(), more.begin(), more.end());
        options.env["KAZ_PROGRESS"] = "none";
        const moxkit::Result result = run(line);
        EXPECT_EQ((result.out + result.err).find('\x1b'), std::string::npos) << result.out;
    }
}

TEST_F(MoxReport, LinksAndSpecialFilesAreShownAndNotFollowed) {
    tree.write("outside/secret", "");
    tree.write("plant/a/file", "1");
    fs::create_symlink(".", tree.path("plant/a/self"));
    fs::create_symlink("..", tree.path("plant/a/up"));
    fs::create_symlink(tree.path("outside"), tree.path("plant/a/out"));
    fs::create_symlink(tree.path("outside"), tree.path("plant/b"));
    fs::create_symlink("nowhere", tree.path("plant/a/dangling"));
    ASSERT_EQ(::mkfifo(tree.path("plant/a/pipe").c_str(), 0600), 0);
    const std::string text = textOf();
    expectInOrder(text, {"1 system with 6 files, 1 B", "dangling", "link", "file", "1 B", "out",
                         "link", "pipe", "special file", "self", "link", "up", "link",
                         "Files beside the systems", "b", "link"});
    EXPECT_EQ(text.find("secret"), text.npos);
    EXPECT_EQ(run({"-p", "plant", "-s", "b"}).err, "There is no system 'b'\n");
}

TEST_F(MoxReport, WhatCannotBeReadIsNamedAndTheRestReported) {
    tree.write("plant/a/closed/file", "");
    tree.write("plant/a/open/file", "123");
    tree.write("plant/closed/file", "");
    for (const std::string name : {"plant/a/closed", "plant/closed"})
        fs::permissions(tree.path(name), fs::perms::none);
    fs::permissions(tree.path(), fs::perms::all);
    const moxkit::Result result = moxkit::run(
        moxcopy_test::asPlainUser({moxkit::binDirectory() + "/moxreport", "-p", "plant"}), options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Not read: 'a/closed' (Permission denied)\n"
                          "Not read: 'closed' (Permission denied)\n");
    expectInOrder(reference::HtmlReader().read(result.out),
                  {"2 systems with 1 file, 3 B", "What could not be read", "open", "file", "3 B",
                   "What could not be read", "a/closed: Permission denied",
                   "closed: Permission denied"});
    fs::permissions(tree.path("plant/a/closed"), fs::perms::all);
    fs::permissions(tree.path("plant/closed"), fs::perms::all);
}

TEST_F(MoxReport, LargeAndDeepProjects) {
    tree.mkdir("plant/many");
    for (int i = 0; i < 10000; ++i)
        std::ofstream(tree.path("plant/many/file" + std::to_string(i)));
    // Far deeper than a path may be long.
    tree.mkdir("plant/deep");
    const fs::path here = fs::current_path();
    fs::current_path(tree.path("plant/deep"));
    for (int i = 0; i < 3000; ++i) {
        ASSERT_EQ(::mkdir("d", 0700), 0);
        ASSERT_EQ(::chdir("d"), 0);
        if (i % 1000 == 999)
            std::ofstream("file");
    }
    fs::current_path(here);
    for (const std::string format : {"html", "rtf", "mif", "interleaf"}) {
        const moxkit::Result result = run({"-p", "plant", "-formats", format});
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(result.err.starts_with("Not read: 'deep/d/d/"));
        EXPECT_TRUE(result.err.ends_with("...' (File name too long)\n")) << result.err;
        EXPECT_EQ(count(result.err, "\n"), 1U);
        EXPECT_GT(count(result.out, "file"), 10000U);
    }
    expectInOrder(run({"-p", "plant"}).out,
                  {"2 systems with 10002 files", "System many", "file0", "file9999",
                   "What could not be read", "...: File name too long"});
    EXPECT_EQ(TI_rmtree(tree.native("plant/deep").c_str()), 0);
}

} // namespace
