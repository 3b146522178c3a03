// Absolute paths: one table for every host.
#include "tools/files/kazpath.h"

#include "full_path_rows.h"
#include "kit/host.h"
#include "kit/temp_tree.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

/// The current directory lies deep enough to have one above it.
class FullPath : public testing::Test {
protected:
    FullPath() : before_(fs::current_path()) { fs::current_path(tree_.mkdir("one/two")); }
    ~FullPath() override { fs::current_path(before_); }

    std::string here() const { return tree_.native("one/two"); }

private:
    kit::TempTree tree_;
    fs::path before_;
};

TEST_F(FullPath, IsTheSameTextOnEveryHost) {
    ASSERT_GE(full_path::rows().size(), 100U);
    for (const auto& [path, pattern] : full_path::rows())
        EXPECT_EQ(kazFullPath(path).getValue(),
                  full_path::expected(pattern, here(), kit::currentDrive(*path)))
            << path;
}

/// Stripping them would name another file where they are part of a name.
TEST_F(FullPath, DotsAndBlanksAtTheEndOfANameStayWhereTheyCount) {
    if (kit::hasDrives)
        GTEST_SKIP() << "they do not count here; see SystemPath";
    for (const char* path : {R"(\a.)", R"(\a )", R"(\a.\b)", R"(\...)", R"(\a. .)", R"(\NUL)"})
        EXPECT_STREQ(kazFullPath(path).getValue(), path);
}

} // namespace
