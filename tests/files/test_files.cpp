// SPDX-License-Identifier: Apache-2.0
// File helpers: what they do alike on every host.
#include "tools/files/tifiles.h"

#include "kit/host.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"
#include "tree.h"

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;
using tree::listed;
using Names = std::set<std::string>;

/// A place that this host does not have.
const std::string nowhere = kit::hasDrives ? "Q:\\" : "C:\\";

TEST(Files, CatfileJoinsIntoTheBufferOfAnArgument) {
    char out[9] = "";
    EXPECT_STREQ(TI_catfile("a/", "~", out, 9), "a\\~");
    EXPECT_STREQ(TI_catfile("dir", nullptr, out, 9), "dir");
    EXPECT_STREQ(TI_catfile(out, "sub", out, 9), "dir\\sub");
    EXPECT_STREQ(TI_catfile(nullptr, nullptr, out, 1), "");
    EXPECT_EQ(TI_catfile("a", "b", out, -1), nullptr);
}

TEST(Files, MakedirMakesParents) {
    const moxkit::TempTree tree;
    EXPECT_EQ(TI_makedir(tree.native("a/b/c").c_str()), 0);
    EXPECT_TRUE(fs::is_directory(tree.path("a/b/c")));
    EXPECT_EQ(TI_makedir(tree.path("a//b/c/").c_str()), 0);
    EXPECT_EQ(TI_makedir("\\"), 0);
    tree.write("file", "x");
    EXPECT_EQ(TI_makedir(tree.native("file/d").c_str()), -1);
    EXPECT_EQ(errno, EEXIST); // of the parent
    for (const std::string& impossible :
         {tree.native("file"), nowhere + "never\\made", std::string()})
        EXPECT_EQ(TI_makedir(impossible.c_str()), -1) << impossible;
    EXPECT_EQ(TI_makedir(nullptr), -1);
    const std::string longer = tree.native("limit");
    const int length = static_cast<int>(longer.size());
    EXPECT_EQ(TI_makedir(longer.c_str(), length), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_FALSE(tree.exists("limit"));
    EXPECT_EQ(TI_makedir(longer.c_str(), length + 1), 0);
    EXPECT_EQ(TI_mkdir(longer.c_str(), 0777), -1);
    EXPECT_EQ(errno, EEXIST);
}

TEST(Files, FopenTakesBothSpellings) {
    const moxkit::TempTree tree;
    for (const std::string& path : {tree.native("f"), tree.path("f")}) {
        FILE* file = TI_fopen(path.c_str(), "w");
        ASSERT_NE(file, nullptr);
        std::fputs("line\n", file);
        std::fclose(file);
        EXPECT_EQ(TI_fopen(path.c_str(), "w+x"), nullptr);
        EXPECT_EQ(errno, EEXIST);
        EXPECT_EQ(tree.readText("f"), "line\n");
        EXPECT_TRUE(fs::remove(tree.path("f")));
    }
    EXPECT_EQ(TI_fopen((nowhere + "x").c_str(), "w"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(TI_fopen("", "r"), nullptr);
}

TEST(Files, ListingGivesEachMatchOnce) {
    const moxkit::TempTree tree;
    const std::string prefix = tree.native("d") + "\\";
    Names all = {prefix + ".", prefix + ".."};
    for (const std::string& name : tree::awkwardNames()) {
        tree.write("d/" + name, "");
        all.insert(prefix + name);
    }
    EXPECT_EQ(listed(prefix + "*"), all);
    EXPECT_EQ(listed(tree.path("d/*.*")), all);
    EXPECT_EQ(listed(prefix + "*.txt"),
              (Names{prefix + "b.txt", prefix + "keep.txt", prefix + "tmp.txt"}));
    EXPECT_EQ(listed(prefix + "*.TXT"), kit::hasDrives ? listed(prefix + "*.txt") : Names());
    EXPECT_EQ(listed(prefix + "s*b"), Names{prefix + "sub"});
    for (const std::string& none : {prefix + "[", tree.native("missing/*"), nowhere + "*"})
        EXPECT_EQ(listed(none), Names()) << none;
    EXPECT_EQ(listed(""), Names());
}

/// Sizes around the borders between one read, many, and a copy in the kernel.
TEST(Files, CopyKeepsContentsAndIsDatedNow) {
    const moxkit::TempTree tree;
    for (const std::size_t size : {0, 1, 65535, 65536, 65537, 5000000}) {
        std::string text(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            text[i] = static_cast<char>(i * 2654435761u >> 13);
        tree.write("src", text);
        const auto now = fs::file_time_type::clock::now();
        fs::last_write_time(tree.path("src"), now - std::chrono::hours(1000));
        tree.write("old", "what was there");
        fs::remove(tree.path("new"));
        for (const char* target : {"old", "new"}) {
            ASSERT_EQ(copy_file(tree.native("src").c_str(), tree.path(target).c_str(), false), 0);
            EXPECT_GE(fs::last_write_time(tree.path(target)), now - std::chrono::seconds(2));
            ASSERT_TRUE(tree.read(target) == text) << size;
        }
    }
    EXPECT_EQ(tree::snapshot(tree.path()).size(), 3u);
}

TEST(Files, CopyThatFailsChangesNothing) {
    const moxkit::TempTree tree;
    tree.write("f", "text");
    tree.write("g", "other");
    tree.write("large", std::string(100000, 'x'));
    tree.mkdir("d");
    const tree::Snapshot before = tree::snapshot(tree.path());
    const auto fails = [&](const std::string& source, const std::string& target, bool keep) {
        errno = 0;
        EXPECT_EQ(copy_file(source.c_str(), target.c_str(), keep), -1) << source << " " << target;
        return errno;
    };
    const std::string f = tree.native("f");
    EXPECT_EQ(fails(f, f, false), EINVAL);
    EXPECT_EQ(fails(f, tree.native("g"), true), EEXIST);
    EXPECT_EQ(fails(tree.native("large"), tree.native("g"), true), EEXIST);
    EXPECT_EQ(fails(tree.native("d"), tree.native("new"), false), EISDIR);
    EXPECT_EQ(fails(f, tree.native("d"), false), EISDIR);
    EXPECT_EQ(fails(tree.native("missing"), tree.native("new"), false), ENOENT);
    EXPECT_EQ(fails(f, tree.native("missing/new"), false), ENOENT);
    EXPECT_EQ(fails(f, nowhere + "new", false), ENOENT);
    EXPECT_EQ(fails(kit::hasDrives ? "NUL" : "/dev/zero", tree.native("new"), false), EINVAL);
    EXPECT_EQ(copy_file(nullptr, nullptr, false), -1);
    EXPECT_EQ(tree::snapshot(tree.path()), before);
}

TEST(Files, TemporaryFilesAreCreatedAndPrivate) {
    const moxkit::TempTree tree;
    const moxkit::ScopedEnv place("TMPDIR", tree.path("").c_str());
    Names names;
    for (int i = 0; i < 200; ++i)
        names.insert(
            TI_tmpname(i % 2 == 0 ? nullptr : tree.native().c_str(), "x/../y:").getValue());
    EXPECT_EQ(names.size(), 200u);
    const tree::Snapshot files = tree::snapshot(tree.path());
    EXPECT_EQ(files.size(), 200u);
    for (const auto& [name, what] : files) {
        EXPECT_EQ(name.rfind("x_.._y_", 0), 0u);
        EXPECT_TRUE(kit::hasDrives || what == std::to_string(0600) + ":") << what;
    }
    KazString path;
    FILE* file = TI_tmpfile("", nullptr, path);
    ASSERT_NE(file, nullptr);
    std::fputs("round", file);
    std::rewind(file);
    char text[6] = "";
    EXPECT_EQ(std::fread(text, 1, 5, file), 5u);
    std::fclose(file);
    EXPECT_STREQ(text, "round");
    EXPECT_EQ(tree::contents(kazHostPath(path.getValue()).getValue()), "round");
    EXPECT_TRUE(TI_isRealDirectory(TI_tmpdir(nullptr, "d").getValue()));

    const KazString before = path;
    EXPECT_EQ(TI_tmpfile(tree.native("missing").c_str(), "x", path), nullptr);
    EXPECT_EQ(path, before);
    EXPECT_TRUE(TI_tmpname(nowhere.c_str(), "x").isEmpty());
    EXPECT_TRUE(TI_tmpdir(nowhere.c_str(), "x").isEmpty());
    EXPECT_TRUE(TI_tmpdir(tree.native("missing").c_str(), "x").isEmpty());
}

} // namespace
