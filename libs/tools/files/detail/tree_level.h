/// @file
/// One level of a walk through a directory tree.
#pragma once

#include "tools/platform/host.h"
#include "tools/strings/KazString.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kaz::detail {

/// An open directory of the tree, its path for messages (the top's as it was
/// given, else native), and the levels above it. A level must outlive the levels below it.
class TreeLevel {
public:
    /// The top, by path; "" is the current directory. Links are followed.
    explicit TreeLevel(const KazString& path);
    /// The entry @p name of @p above, which must be a real directory.
    TreeLevel(const TreeLevel& above, const std::string& name);
    /// Another directory that is walked in place of @p instead, by path.
    TreeLevel(const TreeLevel& instead, const KazString& path);

    const host::Directory& directory() const { return directory_; }
    const KazString& path() const { return path_; }
    /// The native path of an entry.
    KazString pathOf(const std::string& name) const;

    bool isOpen() const { return directory_.isOpen(); }
    /// Both open and one and the same directory.
    bool isSame(const TreeLevel& other) const;
    /// Is this directory being walked already further up? True where a pattern
    /// or a mount leads back: going on would never end.
    bool isAgain() const;

private:
    void identify();

    host::Directory directory_;
    KazString path_;
    host::FileStatus identity_;
    const TreeLevel* above_ = nullptr;
};

/// Where the wildcard of a pattern begins: behind its last separator or its
/// drive. Other than in the path algebra a ":" elsewhere is part of a name here.
std::size_t wildcardStart(const char* pattern);

/// The entries of @p level that match @p pattern, without "." and "..". False
/// when the directory could not be read to its end.
bool listEntries(const TreeLevel& level, const char* pattern, std::vector<host::Entry>& entries);

} // namespace kaz::detail
