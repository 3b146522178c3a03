// File helpers: joining, and temporary files.
#include "tools/files/tifiles.h"

#include "kit/env.h"
#include "kit/host.h"
#include "kit/temp_tree.h"
#include "tree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

TEST(Files, CatfileFitsExactlyOrNotAtAll) {
    char out[9] = "before";
    EXPECT_EQ(TI_catfile("abc", "defg", out, 8), nullptr);
    EXPECT_STREQ(out, "before");
    EXPECT_EQ(TI_catfile("abc", "defg", out, 9), out);
    EXPECT_STREQ(out, "abc\\defg");
    EXPECT_STREQ(TI_catfile("a/", "~", out, 9), "a\\~");
    EXPECT_STREQ(TI_catfile("", "x/y", out, 9), "x\\y");
    EXPECT_STREQ(TI_catfile("dir", nullptr, out, 9), "dir");
    EXPECT_STREQ(TI_catfile(out, "sub", out, 9), "dir\\sub");
    EXPECT_STREQ(TI_catfile(nullptr, nullptr, out, 1), "");
    EXPECT_EQ(TI_catfile("", "", out, 0), nullptr);
    EXPECT_EQ(TI_catfile("a", "b", out, -1), nullptr);
}

TEST(Files, TemporaryFilesAreCreatedAndPrivate) {
    const kit::TempTree tree;
    const kit::ScopedEnv place("TMPDIR", tree.path("").c_str());
    std::set<std::string> names;
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
    EXPECT_STREQ(text, "round");
    std::fclose(file);
    EXPECT_EQ(tree::contents(kazHostPath(path.getValue()).getValue()), "round");
    EXPECT_TRUE(TI_isRealDirectory(TI_tmpdir(nullptr, "d").getValue()));

    const KazString before = path;
    EXPECT_EQ(TI_tmpfile(tree.native("missing").c_str(), "x", path), nullptr);
    EXPECT_EQ(path, before);
    EXPECT_TRUE(TI_tmpname(kit::hasDrives ? "Q:\\" : "C:\\", "x").isEmpty());
    EXPECT_TRUE(TI_tmpdir(tree.native("missing").c_str(), "x").isEmpty());
}

} // namespace
