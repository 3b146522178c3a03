// SPDX-License-Identifier: Apache-2.0
/// @file
/// Files and directories by open directory: what is under one name cannot be
/// exchanged between two steps of the same work. The conventions of host.h hold.
#pragma once

#if defined(_WIN32)
#include "tools/platform/windows/open_directory.h"
#else
#include "tools/platform/posix/open_directory.h"
#endif

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::host {

enum class Kind { missing, file, directory, link, special };

/// What is known about a file.
struct FileStatus {
    Kind kind = Kind::missing; ///< link only where links are not followed
    unsigned mode = 0;         ///< the nine permission bits (rwxrwxrwx)
    std::uint64_t size = 0;    ///< bytes
    std::int64_t modified = 0; ///< seconds since 1970-01-01 UTC
    std::uint64_t device = 0;  ///< with `serial`: the same pair, the same file
    std::uint64_t serial = 0;
};

/// Does @p name match a wildcard? "*" is any run of characters, a leading dot
/// included, "?" any one byte; nothing else is special. "*.*" matches every
/// name. Case counts where the host's file names are told apart by case.
/// Linear space, time at most length of name times length of pattern.
bool matches(std::string_view pattern, std::string_view name);

/// One name of a directory.
struct Entry {
    std::string name; ///< as the host spells it
    Kind kind = Kind::missing;
    /// False when the name cannot be written as one component of native text:
    /// handing it to any function that takes a path would name another file.
    bool expressible = true;
};

/// How one file is copied.
struct CopyRules {
    bool mayReplace = false; ///< else an existing target is a failure (EEXIST)
    /// The target's directory is nobody else's yet, so that it does no harm when a
    /// killed process leaves half a file there: written under its name at once.
    bool inPlace = false;
    /// The permission bits are cut by the file-creation mask; else they are kept as
    /// they are.
    bool cutByMask = false;
    /// Asked between portions of a large file, each a matter of some hundredths of
    /// a second; false ends the copy with ECANCELED. Null never ends it.
    bool (*goesOn)() = nullptr;
    /// Becomes the bytes of the target. Of 10,000 small files each look would take a
    /// twelfth of the time.
    std::uint64_t* size = nullptr;
};

/// An open directory. Operations on its entries go through the handle, so they
/// stay inside it whatever the entry is called and however long its path is:
/// a name is one component in the host's spelling and never interpreted.
/// All operations on a Directory that is not open fail with EBADF. Only list()
/// needs the permission to read.
class Directory {
public:
    /// Not open.
    Directory();
    /// Opens by native path, following links. Check isOpen(); errno tells why not.
    explicit Directory(const char* path);
    /// Opens an entry of @p parent that is a real directory (a link is refused
    /// with ENOTDIR).
    Directory(const Directory& parent, const std::string& name);
    Directory(Directory&& other) noexcept;
    Directory& operator=(Directory&& other) noexcept;
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    ~Directory();

    bool isOpen() const;
    /// The directory that holds this one; the topmost one holds itself.
    Directory above() const;
    /// Opens it once more.
    Directory again() const;
    /// The directory itself.
    int status(FileStatus& result) const;
    /// An entry, links followed.
    int status(const std::string& name, FileStatus& result) const;
    /// An entry itself, which may be a link.
    int statusOfLink(const std::string& name, FileStatus& result) const;

    /// Replaces @p result by the entries that match @p pattern, "." and ".."
    /// included where they match, each once, in the host's order. What was read
    /// before a failure is kept.
    int list(std::string_view pattern, std::vector<Entry>& result) const;

    /// Whether names that differ in case alone are one name here, as far as the host knows
    /// that of the directory itself or of the kind of its file system; nothing is written.
    std::optional<bool> ignoresCase() const;

    /// Opens a file of the directory as fopen would, but follows no link, and waits
    /// for nobody where the name is a pipe's: what is no regular file fails with
    /// EINVAL, a link with ELOOP. "x" in @p mode wants a new file. Null with errno set.
    std::FILE* openFile(const std::string& name, const char* mode) const;

    /// Sets the permission bits of an entry, which must be no link.
    int setMode(const std::string& name, unsigned mode) const;
    int makeDirectory(const std::string& name, unsigned mode) const;
    int removeDirectory(const std::string& name) const;
    int removeFile(const std::string& name) const;
    /// Gives an entry, which may be a directory or a link, the name @p newName in
    /// @p target, in one step. An existing target is replaced, a link itself and not
    /// what it points to, or, unless @p mayReplace, a failure (EEXIST). EXDEV where
    /// the two directories are not of one file system.
    int rename(const std::string& name, const Directory& target, const std::string& newName,
               bool mayReplace) const;
    /// Copies an entry that list() gave into @p target under its own name, by the
    /// rules of kaz::host::copyFile.
    int copyFile(const Entry& entry, const Directory& target, bool mayReplace) const;
    /// The same as @p rules say.
    int copyFile(const Entry& entry, const Directory& target, const CopyRules& rules) const;

private:
    explicit Directory(OpenDirectory open);

    OpenDirectory open_; ///< what the host holds it by
};

} // namespace kaz::host
