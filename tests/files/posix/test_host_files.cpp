// File helpers where the host has links, permissions and one root.
#include "tools/files/tifiles.h"

#include "files/tree.h"
#include "kit/env.h"
#include "kit/temp_tree.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <utime.h>

namespace {

namespace fs = std::filesystem;

std::set<std::string> listed(const std::string& pattern) {
    KazStringColl entries;
    const int count = read_a_dir(pattern.c_str(), entries);
    std::set<std::string> result;
    for (int i = 0; i < entries.getSize(); ++i)
        result.insert(entries[i].getValue());
    EXPECT_EQ(result.size(), static_cast<std::size_t>(count)); // each once
    return result;
}

TEST(Files, HostAndNativeSpelling) {
    EXPECT_STREQ(kazHostPath("\\tmp\\x/y").getValue(), "/tmp/x/y");
    EXPECT_STREQ(kazNativePath("/tmp/x").getValue(), "\\tmp\\x");
    for (const char* nothing : {"C:\\x", "c:x", "\\\\srv\\share", "//srv/share"})
        EXPECT_TRUE(kazHostPath(nothing).isEmpty()) << nothing;
    EXPECT_STREQ(kazHostPath("1:x").getValue(), "1:x");
}

TEST(Files, MakedirMakesParents) {
    const kit::TempTree tree;
    EXPECT_EQ(TI_makedir(tree.native("a/b/c").c_str()), 0);
    EXPECT_TRUE(fs::is_directory(tree.path("a/b/c")));
    EXPECT_EQ(TI_makedir(tree.path("a//b/c/").c_str()), 0);
    fs::create_directory_symlink("a", tree.path("link"));
    EXPECT_EQ(TI_makedir(tree.native("link/d").c_str()), 0);
    tree.write("file", "x");
    EXPECT_EQ(TI_makedir(tree.native("file/d").c_str()), -1);
    EXPECT_EQ(TI_makedir(tree.native("file").c_str()), -1);
    EXPECT_EQ(TI_makedir(""), -1);
    EXPECT_EQ(TI_makedir(nullptr), -1);
    EXPECT_EQ(TI_makedir("C:\\never\\made"), -1);
    EXPECT_EQ(TI_makedir("\\"), 0);
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
    const kit::TempTree tree;
    for (const std::string& path : {tree.native("f"), tree.path("f")}) {
        FILE* file = TI_fopen(path.c_str(), "w");
        ASSERT_NE(file, nullptr);
        std::fclose(file);
        EXPECT_TRUE(fs::remove(tree.path("f")));
    }
    for (const char* nothing : {"C:\\x", "c:x", "\\\\srv\\x", ""})
        EXPECT_EQ(TI_fopen(nothing, "w"), nullptr);
}

TEST(Files, RealDirectoriesAreNoLinks) {
    const kit::TempTree tree;
    tree.mkdir("d");
    tree.write("f", "");
    fs::create_directory_symlink("d", tree.path("link"));
    for (const char* yes : {"d", "d/", "link/../d", ""})
        EXPECT_TRUE(TI_isRealDirectory(tree.native(yes).c_str())) << yes;
    for (const char* no : {"f", "link", "link/", "link//", "missing"})
        EXPECT_FALSE(TI_isRealDirectory(tree.native(no).c_str())) << no;
    EXPECT_TRUE(TI_isRealDirectory("/"));
    EXPECT_FALSE(TI_isRealDirectory(nullptr));
}

TEST(Files, ListingGivesEachMatchOnce) {
    const kit::TempTree tree;
    for (const std::string& name : tree::awkwardNames())
        tree.write("d/" + name, "");
    tree.write("d/back\\slash", "");
    const std::string prefix = tree.native("d") + "\\";
    std::set<std::string> all = {prefix + ".", prefix + ".."};
    for (const std::string& name : tree::awkwardNames())
        all.insert(prefix + name);
    EXPECT_EQ(listed(prefix + "*"), all);
    EXPECT_EQ(listed(tree.path("d/*.*")), all);
    EXPECT_EQ(listed(prefix + "*.txt"),
              (std::set<std::string>{prefix + "b.txt", prefix + "keep.txt", prefix + "tmp.txt"}));
    EXPECT_EQ(listed(prefix + "??"),
              (std::set<std::string>{prefix + "..", prefix + "-r", prefix + "\xff\xfe"}));
    EXPECT_EQ(listed(prefix + "s*b"), std::set<std::string>{prefix + "sub"});
    EXPECT_EQ(listed(prefix + "["), std::set<std::string>{});
    EXPECT_EQ(listed(tree.native("missing/*")), std::set<std::string>{});
    EXPECT_EQ(listed("C:\\*"), std::set<std::string>{});
    EXPECT_EQ(listed(""), std::set<std::string>{});

    // In the current directory no name may look as if it were elsewhere.
    const fs::path before = fs::current_path();
    fs::current_path(tree.path("d"));
    EXPECT_EQ(listed("?"), (std::set<std::string>{"a", ".\\~", " ", "*", "."}));
    EXPECT_EQ(listed("./c*"), (std::set<std::string>{".\\c:x", ".\\caf\xc3\xa9"}));
    EXPECT_EQ(listed("c:*"), std::set<std::string>{}); // a drive
    tree.write("d/sub:x", "");
    EXPECT_EQ(listed("sub:*"), std::set<std::string>{"sub:x"});
    fs::current_path(before);

    // Many stars over a long name do not take for ever.
    tree.write("long/" + std::string(200, 'a'), "");
    EXPECT_TRUE(listed(tree.native("long") + "\\*a*a*a*a*a*a*a*a*a*a*a*a*b").empty());
}

/// Sizes around the borders between one read, many, and a copy in the kernel.
TEST(Files, CopyKeepsContentsAndPermissions) {
    const kit::TempTree tree;
    const mode_t mask = ::umask(077);
    for (const std::size_t size : {0, 1, 65535, 65536, 65537, 131072, 5000000}) {
        std::string text(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            text[i] = static_cast<char>(i * 2654435761u >> 13);
        tree.write("src", text);
        fs::permissions(tree.path("src"), static_cast<fs::perms>(0754));
        const utimbuf times{1000, 1000};
        ::utime(tree.path("src").c_str(), &times);
        tree.write("dst", "what was there");
        const std::time_t before = std::time(nullptr);
        ASSERT_EQ(copy_file(tree.native("src").c_str(), tree.path("dst").c_str(), false), 0);
        struct stat info;
        ASSERT_EQ(::stat(tree.path("dst").c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, 0754u);
        EXPECT_GE(info.st_mtime, before);
        ASSERT_TRUE(tree.read("dst") == text) << size;
    }
    ::umask(mask);
    EXPECT_EQ(tree::snapshot(tree.path()).size(), 2u);
    // A file whose size says nothing.
    EXPECT_EQ(copy_file("/proc/version", tree.native("version").c_str(), false), 0);
    EXPECT_EQ(tree.read("version"), tree::contents("/proc/version"));
}

TEST(Files, CopyThatFailsChangesNothing) {
    const kit::TempTree tree;
    tree.write("f", "text");
    tree.write("g", "other");
    tree.mkdir("d");
    fs::create_hard_link(tree.path("f"), tree.path("hard"));
    fs::create_symlink("f", tree.path("link"));
    fs::create_symlink("nowhere", tree.path("dangling"));
    ASSERT_EQ(::mkfifo(tree.path("fifo").c_str(), 0600), 0);
    const tree::Snapshot before = tree::snapshot(tree.path());
    const auto fails = [&](const char* source, const char* target, bool keep) {
        errno = 0;
        EXPECT_EQ(copy_file(tree.native(source).c_str(), tree.native(target).c_str(), keep), -1)
            << source;
        return errno;
    };
    EXPECT_EQ(fails("f", "f", false), EINVAL);
    EXPECT_EQ(fails("f", "hard", false), EINVAL);
    EXPECT_EQ(fails("link", "f", false), EINVAL);
    EXPECT_EQ(fails("f", "g", true), EEXIST);
    EXPECT_EQ(fails("d", "new", false), EISDIR);
    EXPECT_EQ(fails("f", "d", false), EISDIR);
    EXPECT_EQ(fails("fifo", "new", false), EINVAL); // and does not wait for a writer
    EXPECT_EQ(fails("dangling", "new", false), ENOENT);
    EXPECT_EQ(fails("missing", "new", false), ENOENT);
    EXPECT_EQ(fails("f", "missing/new", false), ENOENT);
    EXPECT_EQ(fails("f", "g/new", false), ENOTDIR);
    EXPECT_EQ(copy_file("/dev/zero", tree.native("new").c_str(), false), -1);
    EXPECT_EQ(copy_file(tree.native("f").c_str(), "C:\\new", false), -1);
    EXPECT_EQ(copy_file(nullptr, nullptr, false), -1);
    EXPECT_EQ(tree::snapshot(tree.path()), before);
    EXPECT_EQ(copy_file(tree.native("f").c_str(), tree.native("new").c_str(), true), 0);
    // A link in the target's place gives way; what it points to stays.
    EXPECT_EQ(copy_file(tree.native("g").c_str(), tree.native("link").c_str(), false), 0);
    EXPECT_EQ(tree.read("f"), "text");
    EXPECT_EQ(tree.read("link"), "other");
}

} // namespace
