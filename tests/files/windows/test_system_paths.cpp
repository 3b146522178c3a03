// Paths against the system's own answers.
#include "tools/files/kazpath.h"

#include "files/full_path_rows.h"
#include "kit/random.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>
#include <windows.h>

namespace {

/// What the system makes of a path; the path itself when it makes nothing.
std::string systemAnswer(const std::string& path) {
    char full[MAX_PATH];
    const DWORD length = GetFullPathNameA(path.c_str(), sizeof full, full, nullptr);
    return length > 0 && length < sizeof full ? std::string(full, length) : path;
}

void expectAnswer(const std::string& path) {
    EXPECT_EQ(kazFullPath(path.c_str()).getValue(), systemAnswer(path)) << path;
}

TEST(SystemPath, IsWhatTheSystemSays) {
    for (const auto& [path, pattern] : full_path::rows())
        expectAnswer(path);
    const std::vector<std::string> own = {R"(C:\)",
                                          "C:/",
                                          "C:",
                                          "C:a",
                                          R"(C:..\a)",
                                          R"(c:\a\..\b)",
                                          R"(C:\..\..)",
                                          R"(C:\a\.)",
                                          R"(C:\a\\b\)",
                                          "Q:a",
                                          R"(Q:\a\..)",
                                          R"(1:\a)",
                                          R"(\a.)",
                                          R"(\a )",
                                          R"(\a.\b)",
                                          R"(\a..\b)",
                                          R"(\a \b)",
                                          R"(\...)",
                                          R"(\a...)",
                                          R"(\a. . .)",
                                          "a.",
                                          "a ",
                                          "...",
                                          "NUL",
                                          R"(C:\NUL)",
                                          "nul.txt",
                                          "CON",
                                          "COM1",
                                          "AUX:",
                                          R"(\\srv)",
                                          R"(\\srv\)",
                                          R"(\\srv\share)",
                                          R"(\\.\x)",
                                          R"(\\.\x\..\y)",
                                          R"(\\?\C:\a\..\b)",
                                          R"(\\?\UNC\s\h\..\x)",
                                          R"(\\)",
                                          R"(\\\a)",
                                          "a:b:c",
                                          "a*b?c",
                                          "a<b>c|d",
                                          "\xe9\xff"};
    for (const std::string& path : own)
        expectAnswer(path);
}

TEST(SystemPath, IsWhatTheSystemSaysOfRandomPathsToo) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int i = 0; i < 5000; ++i) {
        const std::string path = random.text(12, "ab.\\/ :C");
        if (!path.starts_with('~'))
            expectAnswer(path);
    }
}

TEST(SystemPath, TheOldLimitHolds) {
    for (const std::size_t length : {255U, 256U, 257U, 258U, 259U, 260U, 5000U})
        expectAnswer(R"(C:\)" + std::string(length - 3, 'x'));
    const std::string over = R"(C:\)" + std::string(300, 'x');
    EXPECT_EQ(kazFullPath(over.c_str()).getValue(), over);
}

} // namespace
