// SPDX-License-Identifier: Apache-2.0
// A directory is held by a descriptor that can do nothing but stand for it, so that permission to
// read it is needed by listing alone. Names of entries go to the system as they are and are never
// joined to a path. Each call on what is not open fails with EBADF, as the system has it.
#include "tools/platform/host.h"
#include "tools/platform/posix/copy_at.h"
#include "tools/platform/posix/descriptor.h"
#include "tools/platform/posix/file_status.h"
#include "tools/platform/wildcard.h"

#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace kaz::host {

namespace {

/// Only listing needs the permission to read: one may write into a directory
/// without it.
constexpr int handleFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
constexpr int listingFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

struct CloseListing {
    void operator()(DIR* listing) const { ::closedir(listing); }
};
using Listing = std::unique_ptr<DIR, CloseListing>;

/// A descriptor of its own: a handle cannot be read, and the position in a listing
/// belongs to the opening.
Listing openListing(int dir) {
    Descriptor own(retry([&] { return ::openat(dir, ".", listingFlags); }));
    if (!own.isOpen())
        return nullptr;
    Listing listing(retry([&] { return ::fdopendir(own.get()); }));
    if (listing != nullptr)
        // The listing closes it from here on.
        own.release();
    return listing;
}

/// From the listing itself where the file system tells.
Kind kindOfEntry(int dir, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN)
        return kindOf(DTTOIF(entry.d_type));
    FileStatus info;
    statusAt(dir, entry.d_name, AT_SYMLINK_NOFOLLOW, info);
    return info.kind;
}

/// The flags of fopen's mode; no link is followed and no pipe's other end waited for.
/// Nothing is emptied at the opening: openFile() does so once it knows that it has a regular file.
int openFlags(std::string_view mode) {
    const auto has = [&](char c) { return mode.find(c) != mode.npos; };
    const int use = has('+') ? O_RDWR : mode.front() == 'r' ? O_RDONLY : O_WRONLY;
    const int create = mode.front() == 'r' ? 0 : O_CREAT | (mode.front() == 'a' ? O_APPEND : 0);
    return use | create | (has('x') ? O_EXCL : 0) | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
}

int checkRegular(int file) {
    FileStatus info;
    if (statusAt(file, "", AT_EMPTY_PATH, info) != 0)
        return -1;
    return info.kind == Kind::file ? 0 : failWith(info.kind == Kind::directory ? EISDIR : EINVAL);
}

/// For a file system that cannot refuse to replace in the same step.
/// What comes to be in between is replaced; there is no other way on such a file system.
int renameIfFree(int from, const char* name, int to, const char* newName) {
    FileStatus existing;
    if (statusAt(to, newName, AT_SYMLINK_NOFOLLOW, existing) == 0)
        return failWith(EEXIST);
    return errno == ENOENT ? retry([&] { return ::renameat(from, name, to, newName); }) : -1;
}

int unlinkEntry(int dir, const std::string& name, int flags) {
    return retry([&] { return ::unlinkat(dir, name.c_str(), flags); });
}

} // namespace

bool matches(std::string_view pattern, std::string_view name) {
    return matchWildcard(pattern, name, [](char a, char b) { return a == b; });
}

Directory::Directory() = default;
Directory::Directory(OpenDirectory open) : open_(std::move(open)) {}
Directory::Directory(Directory&& other) noexcept = default;
Directory& Directory::operator=(Directory&& other) noexcept = default;
Directory::~Directory() = default;

Directory::Directory(const char* path)
    : open_{Descriptor(canName(path)
                           ? retry([&] { return ::open(hostPath(path).c_str(), handleFlags); })
                           : failWith(ENOENT))} {}

Directory::Directory(const Directory& parent, const std::string& name)
    : open_{Descriptor(retry([&] {
          return ::openat(parent.open_.descriptor.get(), name.c_str(), handleFlags | O_NOFOLLOW);
      }))} {
    if (!isOpen() && errno == ELOOP)
        errno = ENOTDIR; // some file systems tell a link so
}

bool Directory::isOpen() const {
    return open_.descriptor.isOpen();
}

Directory Directory::above() const {
    return Directory(OpenDirectory{
        Descriptor(retry([&] { return ::openat(open_.descriptor.get(), "..", handleFlags); }))});
}

Directory Directory::again() const {
    return Directory(OpenDirectory{
        Descriptor(retry([&] { return ::fcntl(open_.descriptor.get(), F_DUPFD_CLOEXEC, 0); }))});
}

int Directory::status(FileStatus& result) const {
    return statusAt(open_.descriptor.get(), "", AT_EMPTY_PATH, result);
}

int Directory::status(const std::string& name, FileStatus& result) const {
    return statusAt(open_.descriptor.get(), name.c_str(), 0, result);
}

int Directory::statusOfLink(const std::string& name, FileStatus& result) const {
    return statusAt(open_.descriptor.get(), name.c_str(), AT_SYMLINK_NOFOLLOW, result);
}

int Directory::list(std::string_view pattern, std::vector<Entry>& result) const {
    result.clear();
    const int dir = open_.descriptor.get();
    const Listing listing = openListing(dir);
    if (listing == nullptr)
        return -1;
    for (;;) {
        const dirent* entry = retry([&] {
            // Only errno tells a failure from the end.
            errno = 0;
            return ::readdir(listing.get());
        });
        if (entry == nullptr)
            return errno == 0 ? 0 : -1;
        const std::string_view name = entry->d_name;
        if (matches(pattern, name))
            result.push_back({std::string(name), kindOfEntry(dir, *entry),
                              name.find('\\') == std::string_view::npos});
    }
}

std::FILE* Directory::openFile(const std::string& name, const char* mode) const {
    Descriptor file(retry(
        [&] { return ::openat(open_.descriptor.get(), name.c_str(), openFlags(mode), 0666); }));
    if (!file.isOpen() || checkRegular(file.get()) != 0)
        return nullptr;
    if (mode[0] == 'w' && retry([&] { return ::ftruncate(file.get(), 0); }) != 0)
        return nullptr;
    std::FILE* stream = retry([&] { return ::fdopen(file.get(), mode); });
    if (stream != nullptr)
        file.release();
    return stream;
}

/// Where the system cannot leave a link alone the C library does it in two steps, through
/// a handle.
int Directory::setMode(const std::string& name, unsigned mode) const {
    return retry([&] {
        return ::fchmodat(open_.descriptor.get(), name.c_str(), mode & 0777, AT_SYMLINK_NOFOLLOW);
    });
}

int Directory::makeDirectory(const std::string& name, unsigned mode) const {
    return retry([&] { return ::mkdirat(open_.descriptor.get(), name.c_str(), mode); });
}

int Directory::removeDirectory(const std::string& name) const {
    return unlinkEntry(open_.descriptor.get(), name, AT_REMOVEDIR);
}

int Directory::removeFile(const std::string& name) const {
    return unlinkEntry(open_.descriptor.get(), name, 0);
}

int Directory::rename(const std::string& name, const Directory& target, const std::string& newName,
                      bool mayReplace) const {
    const int from = open_.descriptor.get();
    const int to = target.open_.descriptor.get();
    const int result = retry([&] {
        return ::renameat2(from, name.c_str(), to, newName.c_str(),
                           mayReplace ? 0 : RENAME_NOREPLACE);
    });
    const bool isUnknown = result != 0 && !mayReplace && (errno == EINVAL || errno == ENOSYS);
    return isUnknown ? renameIfFree(from, name.c_str(), to, newName.c_str()) : result;
}

int Directory::copyFile(const Entry& entry, const Directory& target, bool mayReplace) const {
    CopyRules rules;
    rules.mayReplace = mayReplace;
    return copyFile(entry, target, rules);
}

int Directory::copyFile(const Entry& entry, const Directory& target, const CopyRules& rules) const {
    const char* name = entry.name.c_str();
    CopyKnowledge known{entry.kind == Kind::file, target.open_.granted};
    const int result =
        copyAt({open_.descriptor.get(), name}, {target.open_.descriptor.get(), name}, rules, known);
    target.open_.granted = known.granted;
    return result;
}

} // namespace kaz::host
