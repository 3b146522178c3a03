/// @file
/// Awkward paths and their absolute forms, the same on every host.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace full_path {

/// A path, and what it is in full. In the second, "@" stands for the current
/// directory, "^" for the directory above it; what begins with one separator
/// gets the current drive in front where there are drives.
using Row = std::pair<const char*, const char*>;

inline const std::vector<Row>& rows() {
    static const std::vector<Row> all = {
        // From the root.
        {R"(\)", R"(\)"},
        {"/", R"(\)"},
        {R"(\a)", R"(\a)"},
        {"/a", R"(\a)"},
        {R"(\a\)", R"(\a\)"},
        {"/a/", R"(\a\)"},
        {R"(\a\b)", R"(\a\b)"},
        {"/a/b", R"(\a\b)"},
        {R"(\a\b/c)", R"(\a\b\c)"},
        {R"(\a/b/)", R"(\a\b\)"},
        // Runs of separators.
        {R"(\a\\b)", R"(\a\b)"},
        {"/a//b", R"(\a\b)"},
        {R"(\a\/\/b)", R"(\a\b)"},
        {R"(\a\\\)", R"(\a\)"},
        {"/a///", R"(\a\)"},
        {R"(\a\\\\b\\\\c)", R"(\a\b\c)"},
        // Single dots.
        {R"(\.)", R"(\)"},
        {R"(\.\)", R"(\)"},
        {R"(\a\.)", R"(\a)"},
        {R"(\a\.\)", R"(\a\)"},
        {R"(\.\a)", R"(\a)"},
        {R"(\a\.\b)", R"(\a\b)"},
        {R"(\a\.\.\.\b)", R"(\a\b)"},
        {R"(\a\\.\\b)", R"(\a\b)"},
        {"/./a/./b/./", R"(\a\b\)"},
        {R"(\.\.\.)", R"(\)"},
        // Double dots.
        {R"(\..)", R"(\)"},
        {R"(\..\)", R"(\)"},
        {R"(\..\a)", R"(\a)"},
        {R"(\..\..\..\a)", R"(\a)"},
        {R"(\a\..)", R"(\)"},
        {R"(\a\..\)", R"(\)"},
        {R"(\a\..\b)", R"(\b)"},
        {R"(\a\..\..\b)", R"(\b)"},
        {R"(\a\b\..)", R"(\a)"},
        {R"(\a\b\..\)", R"(\a\)"},
        {R"(\a\b\..\c)", R"(\a\c)"},
        {R"(\a\b\..\..)", R"(\)"},
        {R"(\a\b\..\..\c)", R"(\c)"},
        {R"(\a\b\..\..\..\..\c)", R"(\c)"},
        {R"(\a\b\c\..\..\d)", R"(\a\d)"},
        {R"(\a\..\b\..\c)", R"(\c)"},
        {R"(\a\\..\\b)", R"(\b)"},
        {"/a/../b/./c/..", R"(\b)"},
        {"/a/./../b", R"(\b)"},
        {"/a/b/./../c/", R"(\a\c\)"},
        {R"(\a\.\.\..\b)", R"(\b)"},
        {R"(\a\..\.)", R"(\)"},
        {R"(\a\b\..\.)", R"(\a)"},
        // Names with dots and blanks in them are names.
        {R"(\.a)", R"(\.a)"},
        {R"(\..a)", R"(\..a)"},
        {R"(\...a)", R"(\...a)"},
        {R"(\a.b)", R"(\a.b)"},
        {R"(\a..b)", R"(\a..b)"},
        {R"(\a...b\..c)", R"(\a...b\..c)"},
        {R"(\.a\..\.b)", R"(\.b)"},
        {R"(\..a\..\..b)", R"(\..b)"},
        {R"(\a.b.c\d.e)", R"(\a.b.c\d.e)"},
        {R"(\a b\c d)", R"(\a b\c d)"},
        {R"(\ a)", R"(\ a)"},
        {R"(\ .a)", R"(\ .a)"},
        {R"(\a\. b)", R"(\a\. b)"},
        {R"(\a\ ..b)", R"(\a\ ..b)"},
        {R"(\-r)", R"(\-r)"},
        {R"(\%s%n)", R"(\%s%n)"},
        {R"(\a;b)", R"(\a;b)"},
        {R"(\[a]{b})", R"(\[a]{b})"},
        {R"(\a~1)", R"(\a~1)"},
        {R"(\$HOME\%HOME%)", R"(\$HOME\%HOME%)"},
        // From the current directory.
        {".", "@"},
        {R"(.\)", R"(@\)"},
        {"./", R"(@\)"},
        {"..", "^"},
        {R"(..\)", R"(^\)"},
        {"a", R"(@\a)"},
        {R"(a\)", R"(@\a\)"},
        {"a/b", R"(@\a\b)"},
        {R"(a\b)", R"(@\a\b)"},
        {"./a", R"(@\a)"},
        {R"(.\.\a)", R"(@\a)"},
        {"../a", R"(^\a)"},
        {R"(..\a\)", R"(^\a\)"},
        {R"(.\..\a)", R"(^\a)"},
        {R"(a\..)", "@"},
        {R"(a\..\)", R"(@\)"},
        {R"(a\.)", R"(@\a)"},
        {R"(a\.\)", R"(@\a\)"},
        {R"(a\..\b)", R"(@\b)"},
        {R"(a\..\..)", "^"},
        {R"(a\..\..\b)", R"(^\b)"},
        {"a//b//", R"(@\a\b\)"},
        {R"(a\.\b\..\c)", R"(@\a\c)"},
        {".a", R"(@\.a)"},
        {"..a", R"(@\..a)"},
        {"a..b", R"(@\a..b)"},
        {"a b", R"(@\a b)"},
        {" a", R"(@\ a)"},
        {"-", R"(@\-)"},
        // Shares: their two first components are no places to go up from.
        {R"(\\srv\share\a)", R"(\\srv\share\a)"},
        {"//srv/share/a", R"(\\srv\share\a)"},
        {R"(\\srv\share\a\)", R"(\\srv\share\a\)"},
        {R"(\\srv\share\a\..)", R"(\\srv\share\)"},
        {R"(\\srv\share\a\..\b)", R"(\\srv\share\b)"},
        {R"(\\srv\share\..\..\b)", R"(\\srv\share\b)"},
        {R"(\\srv\share\.\a\\b)", R"(\\srv\share\a\b)"},
        {R"(\/srv/share\a/..\b)", R"(\\srv\share\b)"},
    };
    return all;
}

/// The second of a row on this host. @p here is the current directory.
inline std::string expected(const char* pattern, const std::string& here,
                            const std::string& drive) {
    const std::string rest = pattern + 1;
    if (*pattern == '@')
        return here + rest;
    if (*pattern == '^')
        return here.substr(0, here.rfind('\\')) + rest;
    return (rest.starts_with('\\') ? "" : drive) + pattern;
}

} // namespace full_path
