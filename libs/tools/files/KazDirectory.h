// SPDX-License-Identifier: Apache-2.0
/// @file
/// An open directory and what can be done with its entries.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace kaz::host {
class Directory;
} // namespace kaz::host

/// What a name stands for.
enum class KazFileKind { Missing, File, Directory, Link, Special };

/// What is known about a file.
struct KazFileStatus {
    KazFileKind kind = KazFileKind::Missing; ///< what it is
    unsigned mode = 0;                       ///< the nine permission bits (rwxrwxrwx)
    std::uint64_t size = 0;                  ///< bytes
    std::int64_t modified = 0;               ///< seconds since 1970-01-01 UTC
    std::uint64_t device = 0;                ///< with `serial`: the same pair, the same file
    std::uint64_t serial = 0;                ///< its number on the device

    /// Whether both are of one file, under whatever names; false where either tells of none.
    bool isSameFile(const KazFileStatus& other) const {
        return kind != KazFileKind::Missing && other.kind != KazFileKind::Missing &&
               device == other.device && serial == other.serial;
    }
};

/// One entry of a listing.
struct KazDirectoryEntry {
    KazString name;                          ///< one component, as the host spells it
    KazFileKind kind = KazFileKind::Missing; ///< what the name stands for; a link is told as such
    /// False for a name that native text cannot spell as one component (on POSIX one
    /// with a backslash in it): as part of a path it would mean another file.
    bool isNative = true;
};

/// How KazDirectory::copyFile copies.
struct KazCopyRules {
    bool mayReplace = false; ///< else an existing target is a failure (EEXIST)
    /// Writes the target under its name at once, where the directory is nobody
    /// else's yet and half a file, left by a process that is killed, does no harm. Else
    /// the target appears whole or not at all. The target must not exist.
    bool inPlace = false;
    /// Permission bits are cut by the file-creation mask; else kept as they are.
    bool cutByMask = false;
    /// Asked between portions of a large file (32 MiB, some hundredths of a second);
    /// false ends the copy with ECANCELED. Null never ends it.
    bool (*goesOn)() = nullptr;
    /// Where given, becomes the size of the copy, which saves a look at it.
    std::uint64_t* size = nullptr;
};

/// An open directory. Everything is done by the handle, so that a name which is
/// exchanged with a link between two steps leads nowhere else:
///
///     KazDirectory project("\\home\\me\\project");
///     KazDirectory system = project.openDirectory("brewery");   // never a link
///     std::vector<KazDirectoryEntry> entries;
///     if (system.list("*.dgm", entries) != 0)
///         print_err("cannot be listed: %d", errno);
///
/// Names are those that list() gives: one component in the host's spelling, which is
/// never interpreted ("~" and "c:x" are names like others). A null or empty name, ".",
/// ".." and one that holds the host's separator fail with EINVAL. Functions that
/// return int give 0, or -1 with errno set; those of a directory that is not open
/// fail with EBADF. A system call or a few each; nothing prints. On Windows a
/// directory is held by its name: what is said about exchanging names holds there as
/// far as single steps go.
///
/// KazTreeCursor walks trees of any depth with it.
class KAZ_API KazDirectory {
public:
    /// Not open.
    KazDirectory();
    /// Opens by native path, links followed; "" is the current directory. errno tells
    /// why it is not open.
    explicit KazDirectory(const char* path);
    /// Takes the handle over; @p other is then not open.
    KazDirectory(KazDirectory&& other) noexcept;
    KazDirectory& operator=(KazDirectory&& other) noexcept;
    KazDirectory(const KazDirectory&) = delete;
    KazDirectory& operator=(const KazDirectory&) = delete;
    ~KazDirectory();

    /// Whether there is a directory.
    bool isOpen() const;
    /// Gives the handle back; nothing when it is not open.
    void close();

    /// Opens a directory in this one; a link to one is refused with ENOTDIR.
    KazDirectory openDirectory(const char* name) const;
    /// Opens the directory that holds this one now; the topmost one holds itself.
    KazDirectory openParent() const;
    /// A handle of its own for the same directory.
    KazDirectory openSelf() const;

    /// Of the directory itself.
    int getStatus(KazFileStatus& status) const;
    /// Of an entry; of a link itself, unless @p followLinks. On failure @p status is a
    /// default one.
    int getStatus(const char* name, KazFileStatus& status, bool followLinks = false) const;

    /// Replaces @p entries by those that match @p pattern (see matches()), each once, in
    /// the host's order, without "." and "..". What was read before a failure is kept.
    int list(const char* pattern, std::vector<KazDirectoryEntry>& entries) const;
    /// Does a name match a wildcard? "*" is any run of characters, "?" any one byte,
    /// "*.*" means "*"; case counts where it does on the host. Null counts as "".
    static bool matches(const char* pattern, const char* name);

    /// Whether names that differ in case alone are one name here. Told by the entries that
    /// are there, else by what the host knows of the directory, else by the directories around
    /// it on the same device, else by what the host usually does; nothing is written. Costs a
    /// listing, seldom more, and a look at two entries. False when not open.
    bool ignoresCase() const;
    /// @p name as such a directory compares it: names with equal results are one name.
    /// Letters beyond ASCII count as far as the locale knows them. Null counts as "".
    static KazString withoutCase(const char* name);

    /// Opens a file as TI_fopen does, but follows no link (ELOOP), and fails for what is
    /// no regular file (EINVAL, EISDIR) instead of waiting. The caller closes. Null on
    /// failure.
    FILE* openFile(const char* name, const char* mode) const;

    /// @p mode is cut by the file-creation mask.
    int makeDirectory(const char* name, unsigned mode) const;
    /// Sets the nine permission bits of an entry, where the host has such bits. A link is
    /// a failure.
    int setMode(const char* name, unsigned mode) const;
    /// Removes an empty directory.
    int removeDirectory(const char* name) const;
    /// Removes a file or a link itself.
    int removeFile(const char* name) const;
    /// Removes an entry whatever it is, a directory with all that is in it, however
    /// deep. Links are removed, never followed. Goes on after a failure; the result and
    /// errno are those of the first. @p failed, where given, becomes the native path, from
    /// this directory, of what could not be removed first.
    int removeTree(const char* name, KazString* failed = nullptr) const;
    /// Gives an entry of any kind the name @p newName in @p target, in one step. What has
    /// that name is replaced, a link itself, or, unless @p mayReplace, a failure (EEXIST).
    /// EXDEV between file systems.
    int rename(const char* name, const KazDirectory& target, const char* newName,
               bool mayReplace) const;
    /// Copies a regular file into @p target under its own name. An entry that was listed
    /// as a file is refused when it is a link by now (ELOOP); one that was listed as a
    /// link is followed. Holes stay holes and shared blocks are shared, where the file
    /// system does that. The modification time is now. Otherwise as copy_file.
    int copyFile(const KazDirectoryEntry& entry, const KazDirectory& target,
                 const KazCopyRules& rules = {}) const;

private:
    explicit KazDirectory(kaz::host::Directory&& directory);

    std::unique_ptr<kaz::host::Directory> directory_; ///< null while not open
};
