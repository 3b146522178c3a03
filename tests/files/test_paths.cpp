// SPDX-License-Identifier: Apache-2.0
// Path algebra: what its laws do not tell; these are checked by the fuzzing
// harness of the same name.
#include "tools/files/kazpath.h"

#include "kit/host.h"
#include "kit/table.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::string str(const KazString& text) {
    return text.getValue();
}

TEST(Paths, NullIsNoPath) {
    EXPECT_EQ(kazRootPartLength(nullptr) + kazDirPartLength(nullptr), 0);
    EXPECT_EQ(kazFilenameCompare(nullptr, ""), 0);
    EXPECT_FALSE(kazIsAbsolutePath(nullptr) || kazIsExplicitPath(nullptr));
}

/// A path, and what it is in full. In the second, "@" stands for the current
/// directory, "^" for the directory above it; what begins with one separator
/// gets the current drive in front where there are drives.
constexpr const char* fullPaths =
    R"(\ = \ | /a//b = \a\b | \a\/\/b/ = \a\b\ | \. = \ | /./a/./b/./ = \a\b\ | )"
    R"(\..\..\a = \a | \a\b\..\ = \a\ | \a\b\..\..\..\c = \c | /a/../b/./c/.. = \b | )"
    R"(\.a = \.a | \...a = \...a | \..a\..\..b = \..b | \ .a\a b = \ .a\a b | )"
    R"(\$HOME\%HOME% = \$HOME\%HOME% | . = @ | .. = ^ | ..\ = ^\ | a\b = @\a\b | )"
    R"(.\..\a = ^\a | a\.\ = @\a\ | ..a//b = @\..a\b | //srv/share/a = \\srv\share\a | )"
    R"(\\srv\share\a\.. = \\srv\share\ | \/srv/share\..\a\\b/ = \\srv\share\a\b\ | // = \\ | )"
    R"(//srv = \\srv | \\srv\ = \\srv\)";

/// The second of a row on this host.
std::string expected(const std::string& row, const std::string& here, const std::string& drive) {
    if (row[0] == '@')
        return here + row.substr(1);
    if (row[0] == '^')
        return here.substr(0, here.rfind('\\')) + row.substr(1);
    return (row.substr(1, 1) == "\\" ? "" : drive) + row;
}

TEST(Paths, FullPathIsTheSameTextOnEveryHost) {
    const moxkit::TempTree tree;
    const fs::path before = fs::current_path();
    fs::current_path(tree.mkdir("one/two")); // deep enough to have one above it
    for (const auto& [path, full] : kit::pairs(fullPaths))
        EXPECT_EQ(str(kazFullPath(path.c_str())),
                  expected(full, tree.native("one/two"), kit::currentDrive(path[0])))
            << path;
    fs::current_path(before);
}

TEST(Paths, FullPathWhereThereIsNone) {
    EXPECT_EQ(str(kazFullPath("C:/")), R"(C:\)");
    EXPECT_EQ(str(kazFullPath(nullptr)), "");
    const std::string tooLong = "/x/" + std::string(5000, 'y');
    EXPECT_EQ(str(kazFullPath(tooLong.c_str())), tooLong);
    const moxkit::TempTree tree;
    const moxkit::ScopedEnv home("HOME", tree.path().c_str());
    EXPECT_EQ(str(kazFullPath("~/x/../y")), tree.native("y"));
}

TEST(Paths, SameDirectory) {
    const moxkit::TempTree tree;
    tree.mkdir("one");
    tree.mkdir("two");
    const char* const link = kit::hasDrives ? "one" : "link";
    if (!kit::hasDrives)
        fs::create_directory_symlink(tree.path("one"), tree.path("link"));
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
    EXPECT_TRUE(fs::is_empty(tree.path("one")));
    // A file that happens to have the probe's name survives, and serves as one.
    const std::string probe = "/_tmp" + std::to_string(::getpid());
    tree.write("one" + probe, "mine");
    tree.write("two" + probe, "mine");
    EXPECT_EQ(same(tree.native(link).c_str()), 1);
    EXPECT_EQ(same(tree.native("two").c_str()), 0);
    EXPECT_EQ(tree.read("one" + probe), "mine");
}

TEST(Paths, JoinedWhereThePartsAreMissingOrLieInTheBuffer) {
    std::array<char, 8192> out;
    for (const auto& [dir, name] : {std::pair{(const char*)nullptr, "f"}, {"f", nullptr}}) {
        make_unix_path_rel(dir, name, nullptr, out.data());
        EXPECT_STREQ(out.data(), "f");
    }
    std::strcpy(out.data(), "/own/buffer");
    make_unix_path_rel(out.data(), "x", nullptr, out.data());
    EXPECT_EQ(out.data(), kit::currentDrive() + R"(\own\buffer\x)");
}

} // namespace
