// Path algebra: laws over awkward and random paths, and the rows that the laws
// cannot tell.
#include "tools/files/kazpath.h"

#include "kit/env.h"
#include "kit/host.h"
#include "kit/random.h"
#include "kit/temp_tree.h"

#include <array>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t bufferSize = 8192;

std::string str(const KazString& text) {
    return text.getValue();
}

std::string nativeOf(std::string path) {
    for (char& c : path)
        c = c == '/' ? '\\' : c;
    return path;
}

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

/// Forty awkward paths and a few thousand random ones of the characters that
/// matter.
std::vector<std::string> paths() {
    std::vector<std::string> result = {
        "",      ".",       "..",       "~",        "~user",    "a",        "a.b",       ".a",
        "...",   "/",       "\\",       "//",       "\\\\",     "/\\",      "///",       "\\\\\\",
        "C:",    "C:\\",    "C:/",      "c:x",      "1:x",      ":x",       "::",        "C::",
        "a:b/c", "a/",      "a\\",      "a//b",     "a/b\\c",   "./a",      "..\\a",     "~/a",
        "~\\",   "\\\\srv", "\\\\s\\h", "//s/h/",   "//s/h/d",  "//s//d",   "C:\\a\\..", "/a/./b",
        " ",     "a b",     "a\nb",     "\xff\xe9", "\xc3\xa4", "/a/%s/%n", "C:\\a:b",   "//x:y",
    };
    kit::Random random(kit::seed());
    for (int i = 0; i < 4000; ++i)
        result.push_back(random.text(12, "ab:./\\~C"));
    return result;
}

TEST(Paths, PartsAddUpToThePath) {
    SCOPED_TRACE(kit::seedText());
    for (const std::string& p : paths()) {
        SCOPED_TRACE(p);
        const char* path = p.c_str();
        const int root = kazRootPartLength(path);
        const int dir = kazDirPartLength(path);
        ASSERT_EQ(str(kazPathDirPart(path)) + str(kazLastFileComponent(path)), p);
        ASSERT_EQ(str(kazPathRootPart(path)), p.substr(0, static_cast<std::size_t>(root)));
        ASSERT_EQ(kazPathDirPart(path).getLength(), dir);
        ASSERT_TRUE(dir == 0 || dir >= root);
        if (dir > 0) {
            ASSERT_NE(std::strchr("/\\:", p[static_cast<std::size_t>(dir) - 1]), nullptr);
        }
        if (dir > 0 || root == 0) {
            ASSERT_EQ(str(kazLastFileComponent(path)).find_first_of("/\\:"), std::string::npos);
        }
    }
}

TEST(Paths, NormalisingChangesOnlyTheKindOfSeparator) {
    for (const std::string& p : paths()) {
        const KazString normal = kazNormalizedPath(p.c_str());
        ASSERT_EQ(str(normal), nativeOf(p));
        std::string slashes = p;
        kazMakeRightSlashPath(slashes.data());
        ASSERT_EQ(slashes.find('\\'), std::string::npos);
        kazNormalizePath(slashes.data());
        ASSERT_EQ(slashes, str(normal));
        std::string native = p;
        kazMakeNativePath(native.data());
        ASSERT_EQ(native, str(normal));
        ASSERT_EQ(kazFilenameCompare(p.c_str(), normal.getValue()), 0);
        ASSERT_EQ(kazRootPartLength(p.c_str()), kazRootPartLength(normal.getValue()));
        ASSERT_EQ(kazIsExplicitPath(p.c_str()), kazIsExplicitPath(normal.getValue()));
    }
}

TEST(Paths, ComposingPutsApartTogetherAgain) {
    for (const std::string& p : paths()) {
        SCOPED_TRACE(p);
        const KazString dir = kazPathDirPart(p.c_str());
        const KazString name = kazLastFileComponent(p.c_str());
        const KazString both = kazComposePath(dir.getValue(), name.getValue());
        if (kazIsExplicitPath(name.getValue())) {
            ASSERT_EQ(str(both), nativeOf(str(name)));
        } else if (dir.isEmpty() || isSeparator(str(dir).back())) {
            ASSERT_EQ(str(both), nativeOf(p));
        } else if (!name.isEmpty()) {
            ASSERT_EQ(str(both), nativeOf(str(dir)) + '\\' + str(name));
        }
        ASSERT_EQ(str(kazComposePath("top", "mid", p.c_str())),
                  str(kazComposePath("top\\mid", p.c_str())));
        ASSERT_EQ(str(kazComposePath(p.c_str(), nullptr)), nativeOf(p));
        ASSERT_EQ(str(kazComposePath(nullptr, p.c_str())), nativeOf(p));
    }
}

TEST(Paths, CompareIsTheOrderOfTheMappedCharacters) {
    const auto mapped = [](std::string text) {
        for (char& c : text)
            c = c == '/' ? '\\' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return text;
    };
    const std::vector<std::string> all = paths();
    kit::Random random(kit::seed());
    for (int i = 0; i < 20000; ++i) {
        const std::string& a =
            all[static_cast<std::size_t>(random.below(static_cast<int>(all.size())))];
        const std::string& b =
            all[static_cast<std::size_t>(random.below(static_cast<int>(all.size())))];
        const int result = kazFilenameCompare(a.c_str(), b.c_str());
        ASSERT_EQ(result, -kazFilenameCompare(b.c_str(), a.c_str()));
        ASSERT_EQ(result == 0, mapped(a) == mapped(b)) << a << " and " << b;
    }
    EXPECT_EQ(kazFilenameCompare("C:/A/b", "c:\\a\\B"), 0);
    EXPECT_EQ(kazFilenameCompare("a", "C"), 'a' - 'c');
    EXPECT_EQ(kazFilenameCompare("a", "\xe9"), 'a' - static_cast<signed char>('\xe9'));
    EXPECT_EQ(kazFilenameCompare(nullptr, ""), 0);
    EXPECT_EQ(kazFilenameCompare("a/", "a\\b"), -'b');
}

TEST(Paths, RootsAndDirectories) {
    const std::vector<std::pair<const char*, int>> roots = {
        {R"(\\srv\share\dir)", 12},
        {R"(\\srv\share)", 11},
        {R"(\\srv)", 5},
        {R"(\\)", 2},
        {R"(\x)", 1},
        {R"(C:\x)", 3},
        {"C:x", 2},
        {"1:x", 2},
        {"//srv\\share/", 12},
        {"", 0},
        {nullptr, 0},
        {"x/y", 0},
    };
    for (const auto& [path, length] : roots)
        EXPECT_EQ(kazRootPartLength(path), length) << path;
    EXPECT_EQ(kazDirPartLength("C:file"), 2);
    EXPECT_EQ(kazDirPartLength("dir/file"), 4);
    EXPECT_EQ(kazDirPartLength("file"), 0);
    EXPECT_EQ(kazDirPartLength(R"(\\srv\share)"), 0);
    EXPECT_EQ(kazDirPartLength(R"(\\srv\share\f)"), 12);
    EXPECT_EQ(kazDirPartLength(nullptr), 0);
    EXPECT_EQ(str(kazDirForDisplay("C:\\a\\")), "C:\\a");
    EXPECT_EQ(str(kazDirForDisplay("C:\\")), "C:\\");
    EXPECT_EQ(str(kazDirForDisplay("a//")), "a/");
    EXPECT_EQ(str(kazDirForDisplay("\\")), "\\");
}

TEST(Paths, AbsoluteAndExplicit) {
    for (const char* path : {"\\", "/x", "C:", "z:x", "\\\\srv"})
        EXPECT_TRUE(kazIsAbsolutePath(path) && kazIsExplicitPath(path)) << path;
    for (const char* path : {".", "..", "~", "./x", "..\\x", "~/"})
        EXPECT_TRUE(!kazIsAbsolutePath(path) && kazIsExplicitPath(path)) << path;
    for (const char* path : {"", "x", "~user", ".x", "..x", "...", "1:x", "\xe9:x", "x/.."})
        EXPECT_FALSE(kazIsAbsolutePath(path) || kazIsExplicitPath(path)) << path;
    EXPECT_FALSE(kazIsAbsolutePath(nullptr) || kazIsExplicitPath(nullptr));
    EXPECT_EQ(str(kazComposePath(R"(C:\a)", "b/c")), R"(C:\a\b\c)");
    EXPECT_EQ(str(kazComposePath(R"(C:\a\)", "b")), R"(C:\a\b)");
    EXPECT_EQ(str(kazComposePath(R"(C:\a)", R"(..\b)")), R"(..\b)");
    EXPECT_EQ(str(kazComposePath("x", "D:y")), "D:y");
    EXPECT_EQ(str(kazComposePath("x", "..", "y")), R"(..\y)");
}

TEST(Paths, RelativeFollowsTheWalk) {
    const std::vector<std::array<const char*, 3>> rows = {
        {R"(C:\a\b\f.txt)", R"(C:\a\c\g.txt)", R"(..\c\g.txt)"},
        {R"(C:\a\b\f.txt)", R"(D:\x)", R"(D:\x)"},
        {R"(C:\a)", R"(c:\b)", R"(c:\b)"},           // roots differ exactly
        {R"(C:/a/f)", R"(C:\a/g)", "g"},             // normalised first
        {R"(a\b)", R"(C:\a/c)", R"(C:\a\c)"},        // base is not absolute
        {R"(C:\a\b\f)", R"(C:\x\b\g)", R"(..\b\g)"}, // a later match counts and cuts
        {R"(C:\a\b\)", R"(C:\a\b\f)", "f"},          // the whole base was matched
        {R"(C:\a\b\)", R"(C:\a\c)", "c"},            // its last component counts as the file
        {R"(C:\a)", R"(C:\a)", ""},
        {R"(C:\)", R"(C:\a\b)", R"(a\b)"},
        {R"(\\s\h\a\f)", R"(\\s\h\b\g)", R"(..\b\g)"},
    };
    for (const auto& [base, path, expected] : rows)
        EXPECT_EQ(str(kazRelativePath(base, path)), expected) << base << " to " << path;
}

/// What is relative to a file leads back to the path from the file's directory.
TEST(Paths, RelativeAndFullAreInverse) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    const auto components = [&](int least, char first) {
        std::string text;
        for (int n = least + random.below(4); n > 0; --n)
            text += std::string("\\") + first + random.text(2, "ab.") + 'z';
        return text;
    };
    for (int i = 0; i < 2000; ++i) {
        const std::string common = components(0, 'c');
        const std::string base = common + components(1, 'x');
        const std::string path = common + components(1, 'y');
        const KazString relative = kazRelativePath(base.c_str(), path.c_str());
        ASSERT_FALSE(kazIsAbsolutePath(relative.getValue()));
        const KazString back =
            kazComposePath(kazPathDirPart(base.c_str()).getValue(), "") + relative.getValue();
        ASSERT_EQ(str(kazFullPath(back.getValue())), kit::currentDrive() + path) << base;
    }
}

TEST(Paths, FullPathFoldsAsTheSystemWould) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    const auto withoutEnd = [](std::string text) {
        if (text.size() > 1 && isSeparator(text.back()))
            text.pop_back();
        return text;
    };
    const char* const dots = kit::isFileName("...") ? "..." : "..d";
    const std::array<const char*, 6> parts = {"a", "b.c", ".", "..", dots, ""};
    for (int i = 0; i < 4000; ++i) {
        std::string path = random.oneIn(2) ? "/r" : "r";
        for (int n = random.below(6); n > 0; --n)
            path += std::string("/") + parts[static_cast<std::size_t>(random.below(6))];
        const std::filesystem::path model = (std::filesystem::current_path() / path);
        const std::string full = str(kazFullPath(path.c_str()));
        ASSERT_EQ(withoutEnd(full), nativeOf(withoutEnd(model.lexically_normal().string())))
            << path;
        const bool isRoot = full == kit::currentDrive() + '\\';
        ASSERT_TRUE(isRoot || (full.back() == '\\') == (path.back() == '/')) << path;
        ASSERT_EQ(str(kazFullPath(full.c_str())), full);
        ASSERT_EQ(str(kazFullPath(nativeOf(path).c_str())), full);
    }
}

TEST(Paths, FullPathOfDrivesSharesAndHome) {
    EXPECT_EQ(str(kazFullPath(R"(C:\a\.\..\b/c\)")), R"(C:\b\c\)");
    EXPECT_EQ(str(kazFullPath(R"(C:\..\..)")), R"(C:\)");
    EXPECT_EQ(str(kazFullPath("C:/")), R"(C:\)");
    EXPECT_EQ(str(kazFullPath(R"(\\srv\share\..\..\x)")), R"(\\srv\share\x)");
    EXPECT_EQ(str(kazFullPath("/..")), kit::currentDrive() + '\\');
    if (!kit::hasDrives) { // nor has one a current directory
        EXPECT_EQ(str(kazFullPath("C:x/y")), "C:x/y");
    }
    EXPECT_EQ(str(kazFullPath("")), "");
    EXPECT_EQ(str(kazFullPath(nullptr)), "");
    const std::string tooLong = "/x/" + std::string(5000, 'y');
    EXPECT_EQ(str(kazFullPath(tooLong.c_str())), tooLong);
    const kit::TempTree tree;
    const kit::ScopedEnv home("HOME", tree.path().c_str());
    EXPECT_EQ(str(kazFullPath("~/x/../y")), tree.native("y"));
}

TEST(Paths, SameDirectory) {
    const kit::TempTree tree;
    tree.mkdir("one");
    tree.mkdir("two");
    const char* const link = kit::hasDrives ? "one" : "link";
    if (!kit::hasDrives)
        std::filesystem::create_directory_symlink(tree.path("one"), tree.path("link"));
    const KazString one = tree.native("one").c_str();
    const auto same = [&](const KazString& other) { return kazSamePathName(one, other); };
    EXPECT_EQ(same(one), 1);
    EXPECT_EQ(same(one + "\\"), 1);
    EXPECT_EQ(same(tree.native("ONE").c_str()), 1); // by text alone
    EXPECT_EQ(same(tree.native(link).c_str()), 1);
    EXPECT_EQ(same(tree.path("one").c_str()), 1);
    EXPECT_EQ(same(tree.native("two").c_str()), 0);
    EXPECT_EQ(same(tree.native("missing").c_str()), 0);
    EXPECT_EQ(kazSamePathName(tree.native("missing").c_str(), one), 0);
    EXPECT_EQ(kazSamePathName(R"(\\srv\\share\x\)", R"(\\srv\share\\x)"), 1);
    EXPECT_EQ(kazSamePathName(R"(\srv\share)", R"(\\srv\share)"), 0);
    EXPECT_TRUE(std::filesystem::is_empty(tree.path("one")));
    // A file that happens to have the probe's name survives.
    const std::string probe = "one/_tmp" + std::to_string(::getpid());
    tree.write(probe, "mine");
    EXPECT_EQ(same(tree.native(link).c_str()), kit::hasDrives ? 1 : 0); // by text there
    EXPECT_EQ(tree.read(probe), "mine");
}

TEST(Paths, BlanksAndUnprintablesBecomeUnderlines) {
    KazString path(" a b\tc\nd\x01\x7f-\xe9");
    const KazString shared = path;
    kazRemoveBlanksFromPath(path);
    EXPECT_STREQ(path.getValue(), "_a_b_c_d__-_");
    EXPECT_STREQ(shared.getValue(), " a b\tc\nd\x01\x7f-\xe9");
    KazString clean("C:\\a.b");
    kazRemoveBlanksFromPath(clean);
    EXPECT_STREQ(clean.getValue(), "C:\\a.b");
    KazString empty;
    kazRemoveBlanksFromPath(empty);
    EXPECT_FALSE(empty);
}

TEST(Paths, JoinedIntoACallersBuffer) {
    std::array<char, bufferSize> out;
    const std::string drive = kit::currentDrive();
    const auto joined = [&](const char* dir, const char* name) {
        make_unix_path(dir, name, out.data());
        return std::string(out.data());
    };
    const auto below = [&](const char* dir, const char* name, const char* base) {
        make_unix_path_rel(dir, name, base, out.data());
        return std::string(out.data());
    };
    EXPECT_EQ(joined("/a/b", "../c"), drive + R"(\a\c)");
    EXPECT_EQ(joined("/a/b/", "c"), drive + R"(\a\b\c)");
    EXPECT_EQ(joined("C:/a", "b"), R"(C:\a\b)");
    EXPECT_EQ(joined("", "C:/x"), R"(C:\x)");
    EXPECT_EQ(joined(nullptr, "x/y"), "x/y");
    EXPECT_EQ(joined("x/../y", nullptr), "x/../y");
    EXPECT_EQ(joined(nullptr, nullptr), "");
    EXPECT_EQ(below("d", "f", "/b"), drive + R"(\b\d\f)");
    EXPECT_EQ(below("d/", "f", "C:\\"), R"(C:\d\f)");
    EXPECT_EQ(below("", "f", "/"), drive + R"(\f)");
    EXPECT_EQ(below("/d", "f", ""), drive + R"(\d\f)");
    EXPECT_EQ(below("/d", "f", nullptr), drive + R"(\d\f)");
    EXPECT_EQ(below(nullptr, "f", "/b"), "f");
    std::strcpy(out.data(), "/own/buffer");
    EXPECT_EQ(joined(out.data(), "x"), drive + R"(\own\buffer\x)");
}

} // namespace
