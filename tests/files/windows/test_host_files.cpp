// File helpers where the host has drives and file names without case.
#include "tools/files/tifiles.h"

#include "files/tree.h"
#include "kit/temp_tree.h"

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <windows.h>

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

TEST(Files, HostAndNativeSpellingAreOne) {
    for (const char* path : {R"(C:\x\y)", R"(\\srv\share)", "c:x", R"(\tmp)", "1:x", ""}) {
        EXPECT_STREQ(kazHostPath(path).getValue(), path);
        EXPECT_STREQ(kazNativePath(path).getValue(), path);
    }
    EXPECT_STREQ(kazHostPath("a/b").getValue(), R"(a\b)");
    EXPECT_STREQ(kazNativePath("a/b").getValue(), R"(a\b)");
}

TEST(Files, MakedirMakesParents) {
    const kit::TempTree tree;
    EXPECT_EQ(TI_makedir(tree.native("a/b/c").c_str()), 0);
    EXPECT_TRUE(fs::is_directory(tree.path("a/b/c")));
    EXPECT_EQ(TI_makedir(tree.path("a//B/c/").c_str()), 0);
    tree.write("file", "x");
    EXPECT_EQ(TI_makedir(tree.native("file/d").c_str()), -1);
    EXPECT_EQ(TI_makedir(tree.native("file").c_str()), -1);
    EXPECT_EQ(TI_makedir(""), -1);
    EXPECT_EQ(TI_makedir(nullptr), -1);
    EXPECT_EQ(TI_makedir("Q:\\never\\made"), -1);
    EXPECT_EQ(TI_makedir("\\"), 0);
    EXPECT_EQ(TI_makedir("C:\\"), 0);
    const std::string longer = tree.native("limit");
    const int length = static_cast<int>(longer.size());
    EXPECT_EQ(TI_makedir(longer.c_str(), length), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_FALSE(tree.exists("limit"));
    EXPECT_EQ(TI_makedir(longer.c_str(), length + 1), 0);
    EXPECT_EQ(TI_mkdir(longer.c_str(), 0777), -1);
    EXPECT_EQ(errno, EEXIST);
}

TEST(Files, FopenFindsFilesInEitherSpelling) {
    const kit::TempTree tree;
    for (const std::string& path : {tree.native("f"), tree.path("F")}) {
        FILE* file = TI_fopen(path.c_str(), "w");
        ASSERT_NE(file, nullptr);
        std::fputs("line\n", file);
        std::fclose(file);
        EXPECT_EQ(tree.read("f"), "line\r\n"); // text mode is the runtime library's
        EXPECT_TRUE(fs::remove(tree.path("f")));
    }
    errno = 0;
    EXPECT_EQ(TI_fopen("Q:\\x", "w"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(TI_fopen("", "r"), nullptr);
}

TEST(Files, ListingMatchesWithoutCase) {
    const kit::TempTree tree;
    for (const std::string& name : tree::awkwardNames())
        tree.write("d/" + name, "");
    const std::string prefix = tree.native("d") + "\\";
    std::set<std::string> all = {prefix + ".", prefix + ".."};
    for (const std::string& name : tree::awkwardNames())
        all.insert(prefix + name);
    ASSERT_GT(all.size(), 8U);
    EXPECT_EQ(listed(prefix + "*"), all);
    EXPECT_EQ(listed(tree.path("d/*.*")), all);
    EXPECT_EQ(listed(prefix + "*.TXT"),
              (std::set<std::string>{prefix + "b.txt", prefix + "keep.txt", prefix + "tmp.txt"}));
    EXPECT_EQ(listed(prefix + "S*b"), std::set<std::string>{prefix + "sub"});
    EXPECT_EQ(listed(prefix + "??"), (std::set<std::string>{prefix + "..", prefix + "-r"}));
    EXPECT_EQ(listed(tree.native("missing/*")), std::set<std::string>{});
    EXPECT_EQ(listed("Q:\\*"), std::set<std::string>{});
    EXPECT_EQ(listed(""), std::set<std::string>{});
}

TEST(Files, CopyKeepsContentsAndIsDatedNow) {
    const kit::TempTree tree;
    for (const std::size_t size : {0, 1, 65536, 5000000}) {
        std::string text(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            text[i] = static_cast<char>(i * 2654435761u >> 13);
        tree.write("src", text);
        const auto now = fs::file_time_type::clock::now();
        fs::last_write_time(tree.path("src"), now - std::chrono::hours(1000));
        tree.write("dst", "what was there");
        ASSERT_EQ(copy_file(tree.native("src").c_str(), tree.path("dst").c_str(), false), 0);
        EXPECT_GE(fs::last_write_time(tree.path("dst")), now - std::chrono::seconds(2));
        ASSERT_TRUE(tree.read("dst") == text) << size;
    }
    EXPECT_EQ(tree::snapshot(tree.path()).size(), 2U);
    SetFileAttributesA(tree.path("src").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(copy_file(tree.native("src").c_str(), tree.native("new").c_str(), true), 0);
    EXPECT_TRUE((GetFileAttributesA(tree.path("new").c_str()) & FILE_ATTRIBUTE_READONLY) != 0);
    for (const char* name : {"src", "new"})
        SetFileAttributesA(tree.path(name).c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(Files, CopyThatFailsChangesNothing) {
    const kit::TempTree tree;
    tree.write("f", "text");
    tree.write("g", "other");
    tree.mkdir("d");
    const tree::Snapshot before = tree::snapshot(tree.path());
    const auto fails = [&](const std::string& source, const std::string& target, bool keep) {
        errno = 0;
        EXPECT_EQ(copy_file(source.c_str(), target.c_str(), keep), -1) << source;
        return errno;
    };
    const std::string f = tree.native("f");
    EXPECT_EQ(fails(f, f, false), EINVAL);
    EXPECT_EQ(fails(f, tree.native("F"), false), EINVAL);
    EXPECT_EQ(fails(f, tree.native("g"), true), EEXIST);
    EXPECT_EQ(fails(tree.native("d"), tree.native("new"), false), EISDIR);
    EXPECT_EQ(fails(f, tree.native("d"), false), EISDIR);
    EXPECT_EQ(fails(tree.native("missing"), tree.native("new"), false), ENOENT);
    EXPECT_EQ(fails(f, tree.native("missing/new"), false), ENOENT);
    EXPECT_EQ(fails("NUL", tree.native("new"), false), EINVAL);
    EXPECT_EQ(fails(f, "Q:\\new", false), ENOENT);
    // Somebody holds the target open and lets nobody have it.
    const HANDLE held = CreateFileA(tree.path("g").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(fails(f, tree.native("g"), false), EACCES);
    CloseHandle(held);
    EXPECT_EQ(copy_file(nullptr, nullptr, false), -1);
    EXPECT_EQ(tree::snapshot(tree.path()), before);
}

} // namespace
