/// @file
/// File trees of tests: awkward names, and a tree as plain values to compare.
#pragma once

#include "kit/random.h"
#include "kit/temp_tree.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <unistd.h>
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
        result[entry.path().string().substr(root.size() + 1)] = describe(entry.path());
    return result;
}

inline const std::vector<std::string>& awkwardNames() {
    static const std::vector<std::string> names = {
        "a", "b.txt", "sub",  "keep.txt", "~",           "c:x", "%s%n%d", "two\nlines", "\xff\xfe",
        " ", "-r",    ".dot", "...",      "caf\xc3\xa9", "*",   "a;b",    "'q\"",       "tmp.txt",
    };
    return names;
}

/// Fills a directory with files and directories of awkward names, down to
/// @p depth levels.
inline void grow(const kit::TempTree& tree, const std::string& dir, kit::Random& random,
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

/// Acts as a user without privileges where the test runs as root, so that
/// permissions mean something.
class PlainUser {
public:
    PlainUser() : wasRoot_(::geteuid() == 0) { change(65534); }
    ~PlainUser() { change(0); }
    PlainUser(const PlainUser&) = delete;
    PlainUser& operator=(const PlainUser&) = delete;

private:
    void change(uid_t user) {
        if (wasRoot_ && ::seteuid(user) != 0)
            std::abort();
    }
    bool wasRoot_;
};

} // namespace tree
