// SPDX-License-Identifier: Apache-2.0
/// @file
/// File trees of tests: awkward names, and a tree or a listing as plain values to
/// compare.
#pragma once

#include "kit/host.h"
#include "testkit/random.h"
#include "testkit/temp_tree.h"
#include "tools/files/tifiles.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tree {

namespace fs = std::filesystem;

/// What is at a path below a directory: "dir", "link", "other", or permission
/// bits and contents.
using Snapshot = std::map<std::string, std::string>;

inline std::string contents(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline std::string describe(const fs::path& path) {
    const fs::file_status status = fs::symlink_status(path);
    if (fs::is_directory(status))
        return "dir";
    if (fs::is_symlink(status))
        return "link";
    if (!fs::is_regular_file(status))
        return "other";
    return std::to_string(static_cast<unsigned>(status.permissions())) + ':' + contents(path);
}

inline Snapshot snapshot(const std::string& root) {
    Snapshot result;
    if (!fs::exists(root))
        return result;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root))
        result[entry.path().generic_string().substr(root.size() + 1)] = describe(entry.path());
    return result;
}

/// What read_a_dir gives for @p pattern.
inline std::set<std::string> listed(const std::string& pattern) {
    KazStringColl entries;
    const int count = read_a_dir(pattern.c_str(), entries);
    std::set<std::string> result;
    for (int i = 0; i < entries.getSize(); ++i)
        result.insert(entries[i].getValue());
    EXPECT_EQ(result.size(), static_cast<std::size_t>(count)); // each once
    return result;
}

/// Names that tempt to misread them, as far as the host has them.
inline const std::vector<std::string>& awkwardNames() {
    static const std::vector<std::string> all = {
        "a", "b.txt", "sub",  "keep.txt", "~",           "c:x", "%s%n%d", "two\nlines", "\xff\xfe",
        " ", "-r",    ".dot", "...",      "caf\xc3\xa9", "*",   "a;b",    "'q\"",       "tmp.txt",
    };
    static const std::vector<std::string> names = [] {
        std::vector<std::string> possible;
        std::copy_if(all.begin(), all.end(), std::back_inserter(possible), kit::isFileName);
        return possible;
    }();
    return names;
}

/// Fills a directory with files and directories of awkward names, down to
/// @p depth levels.
inline void grow(const moxkit::TempTree& tree, const std::string& dir, moxkit::Random& random,
                 int depth) {
    const std::vector<std::size_t> sizes = {0, 1, 100, 65535, 65536, 65537, 200000};
    for (const std::string& name : awkwardNames()) {
        const std::string path = dir + "/" + name;
        if (random.oneIn(3))
            continue;
        if (depth > 0 && random.oneIn(4)) {
            tree.mkdir(path);
            grow(tree, path, random, depth - 1);
            continue;
        }
        const std::size_t size = sizes[static_cast<std::size_t>(random.below(7))];
        tree.write(path, std::string(size, static_cast<char>('a' + random.below(26))));
        fs::permissions(tree.path(path), static_cast<fs::perms>(random.oneIn(2) ? 0640 : 0755));
    }
}

} // namespace tree
