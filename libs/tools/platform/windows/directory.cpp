// SPDX-License-Identifier: Apache-2.0
// A directory is its literal path, and each entry's name is checked before it is put behind that:
// a component, and nothing that leads elsewhere. Removing, which clearing up relies on, takes no
// memory of the heap.
#include "tools/platform/host.h"
#include "tools/platform/wildcard.h"
#include "tools/platform/windows/copy.h"
#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/file_status.h"
#include "tools/platform/windows/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <memory>
#include <sys/stat.h>
#include <utility>
#include <windows.h>

namespace kaz::host {

namespace {

const std::wstring* pathOf(const OpenDirectory& open) {
    return open.path.empty() ? nullptr : &open.path;
}

OpenDirectory holding(std::wstring path) {
    if (path.back() != L'\\')
        path += L'\\';
    return {std::move(path)};
}

/// In a literal path the system takes no character for a separator but the backslash; what it
/// refuses or reads as a stream of a file is refused here.
bool isComponent(const std::string& name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of("\\/:*?\"<>|") == std::string::npos;
}

/// The literal path of an entry, or empty with errno set.
std::wstring entryPath(const OpenDirectory& open, const std::string& name) {
    const std::wstring* directory = pathOf(open);
    if (directory == nullptr || !isComponent(name)) {
        errno = directory == nullptr ? EBADF : ENOENT;
        return {};
    }
    return *directory + widened(name);
}

/// The same in memory of the stack: clearing up has to work when there is no other memory,
/// and destructors rely on it.
class EntryName {
public:
    /// False with errno set.
    bool set(const OpenDirectory& open, const std::string& name) {
        const std::wstring* directory = pathOf(open);
        const std::size_t start = directory != nullptr ? directory->size() : 0;
        if (directory == nullptr || !isComponent(name) || start + 1 >= path_.size())
            return failWith(directory == nullptr ? EBADF : ENOENT) == 0;
        std::copy(directory->begin(), directory->end(), path_.begin());
        const int length =
            MultiByteToWideChar(CP_ACP, 0, name.data(), static_cast<int>(name.size()),
                                path_.data() + start, static_cast<int>(path_.size() - start - 1));
        path_[start + static_cast<std::size_t>(length)] = L'\0';
        return length > 0 || failWith(ENAMETOOLONG) == 0;
    }
    const wchar_t* get() const { return path_.data(); }

private:
    std::array<wchar_t, 32768> path_; // as long as a literal path may be
};

template <typename Operation>
int onEntry(const OpenDirectory& open, const std::string& name, Operation operation) {
    const std::wstring path = entryPath(open, name);
    return path.empty() ? -1 : operation(path);
}

OpenDirectory openDirectory(const std::wstring& path, bool followLink) {
    FileStatus info;
    if (path.empty() || statusOfLiteral(path, followLink, info) != 0)
        return {};
    if (info.kind == Kind::directory)
        return holding(path);
    errno = ENOTDIR;
    return {};
}

/// The flags of fopen's mode.
int openFlags(std::string_view mode) {
    const auto has = [&](char c) { return mode.find(c) != mode.npos; };
    const char first = mode.front();
    const int use = has('+') ? _O_RDWR : first == 'r' ? _O_RDONLY : _O_WRONLY;
    const int create = first == 'r' ? 0 : first == 'a' ? _O_CREAT | _O_APPEND : _O_CREAT | _O_TRUNC;
    return use | create | (has('x') ? _O_EXCL : 0) | (has('b') ? _O_BINARY : _O_TEXT) |
           _O_NOINHERIT;
}

/// A file that is there must be a regular one.
/// A name that is exchanged between this look and the opening goes unnoticed.
int checkRegular(const std::wstring& path) {
    FileStatus info;
    if (statusOfLiteral(path, false, info) != 0)
        return errno == ENOENT ? 0 : -1;
    if (info.kind == Kind::file)
        return 0;
    const int reason = info.kind == Kind::link ? ELOOP : EINVAL;
    return failWith(info.kind == Kind::directory ? EISDIR : reason);
}

struct CloseListing {
    using pointer = HANDLE;
    void operator()(HANDLE listing) const { FindClose(listing); }
};

char lowered(char c) {
    // One byte in the place of a pointer is the call's way to ask for one character.
    const auto byte = static_cast<std::uintptr_t>(static_cast<unsigned char>(c));
    return static_cast<char>(
        reinterpret_cast<std::uintptr_t>(CharLowerA(reinterpret_cast<char*>(byte))));
}

} // namespace

bool matches(std::string_view pattern, std::string_view name) {
    return matchWildcard(pattern, name, [](char a, char b) { return lowered(a) == lowered(b); });
}

Directory::Directory() = default;
Directory::Directory(OpenDirectory open) : open_(std::move(open)) {}
Directory::Directory(Directory&& other) noexcept = default;
Directory& Directory::operator=(Directory&& other) noexcept = default;
Directory::~Directory() = default;

Directory::Directory(const char* path) : open_(openDirectory(literalPath(path), true)) {}

Directory::Directory(const Directory& parent, const std::string& name)
    : open_(openDirectory(entryPath(parent.open_, name), false)) {}

bool Directory::isOpen() const {
    return !open_.path.empty();
}

Directory Directory::above() const {
    const std::wstring* path = pathOf(open_);
    if (path == nullptr) {
        errno = EBADF;
        return {};
    }
    // "\\?\C:\" and "\\?\UNC\server\share\" hold themselves.
    const std::size_t root = path->starts_with(L"\\\\?\\UNC\\")
                                 ? path->find(L'\\', path->find(L'\\', 8) + 1)
                                 : path->find(L'\\', 4);
    // The path ends in a backslash, which is not the one that is looked for.
    const std::size_t last = path->rfind(L'\\', path->size() - 2);
    const bool isRoot = root == std::wstring::npos || root + 1 >= path->size();
    return Directory(openDirectory(isRoot ? *path : path->substr(0, last + 1), true));
}

Directory Directory::again() const {
    if (const std::wstring* path = pathOf(open_))
        return Directory(holding(*path));
    errno = EBADF;
    return {};
}

int Directory::status(FileStatus& result) const {
    const std::wstring* path = pathOf(open_);
    return path != nullptr ? statusOfLiteral(*path, true, result) : failWith(EBADF);
}

int Directory::status(const std::string& name, FileStatus& result) const {
    result = FileStatus();
    return onEntry(open_, name,
                   [&](const std::wstring& path) { return statusOfLiteral(path, true, result); });
}

int Directory::statusOfLink(const std::string& name, FileStatus& result) const {
    result = FileStatus();
    return onEntry(open_, name,
                   [&](const std::wstring& path) { return statusOfLiteral(path, false, result); });
}

int Directory::list(std::string_view pattern, std::vector<Entry>& result) const {
    result.clear();
    const std::wstring* path = pathOf(open_);
    if (path == nullptr)
        return failWith(EBADF);
    // The system's own wildcards also look at short names; ours decide.
    WIN32_FIND_DATAW found;
    const HANDLE first = FindFirstFileW((*path + L'*').c_str(), &found);
    if (first == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_NOT_FOUND ? 0 : failWithLastError();
    const std::unique_ptr<HANDLE, CloseListing> listing(first);
    do {
        Entry entry;
        entry.name = narrowed(found.cFileName, &entry.expressible);
        entry.kind = kindOfAttributes(found.dwFileAttributes);
        if (matches(pattern, entry.name))
            result.push_back(std::move(entry));
    } while (FindNextFileW(listing.get(), &found) != 0);
    return GetLastError() == ERROR_NO_MORE_FILES ? 0 : failWithLastError();
}

std::FILE* Directory::openFile(const std::string& name, const char* mode) const {
    const std::wstring path = entryPath(open_, name);
    if (path.empty() || checkRegular(path) != 0)
        return nullptr;
    const int file = ::_wopen(path.c_str(), openFlags(mode), _S_IREAD | _S_IWRITE);
    // The descriptor was opened for the mode already, so a stream with "w" empties nothing more.
    std::string known = mode; // without "x", which this runtime library does not know
    std::erase(known, 'x');
    std::FILE* stream = file < 0 ? nullptr : ::_fdopen(file, known.c_str());
    if (stream == nullptr && file >= 0)
        ::_close(file);
    return stream;
}

/// There are no such bits here.
int Directory::setMode(const std::string& name, unsigned) const {
    return onEntry(open_, name, [](const std::wstring&) { return 0; });
}

int Directory::makeDirectory(const std::string& name, unsigned) const {
    return onEntry(open_, name, [](const std::wstring& path) {
        return succeededOrFail(CreateDirectoryW(path.c_str(), nullptr));
    });
}

int Directory::removeDirectory(const std::string& name) const {
    EntryName path;
    return path.set(open_, name) ? succeededOrFail(RemoveDirectoryW(path.get())) : -1;
}

int Directory::removeFile(const std::string& name) const {
    EntryName path;
    return path.set(open_, name) ? succeededOrFail(DeleteFileW(path.get())) : -1;
}

int Directory::rename(const std::string& name, const Directory& target, const std::string& newName,
                      bool mayReplace) const {
    const DWORD flags = mayReplace ? MOVEFILE_REPLACE_EXISTING : 0;
    return onEntry(open_, name, [&](const std::wstring& from) {
        return onEntry(target.open_, newName, [&](const std::wstring& to) {
            return succeededOrFail(MoveFileExW(from.c_str(), to.c_str(), flags));
        });
    });
}

int Directory::copyFile(const Entry& entry, const Directory& target, bool mayReplace) const {
    CopyRules rules;
    rules.mayReplace = mayReplace;
    return copyFile(entry, target, rules);
}

int Directory::copyFile(const Entry& entry, const Directory& target, const CopyRules& rules) const {
    return onEntry(open_, entry.name, [&](const std::wstring& from) {
        return onEntry(target.open_, entry.name, [&](const std::wstring& to) {
            const int result = copyLiteral(from, to, rules);
            FileStatus copied;
            if (result == 0 && rules.size != nullptr && statusOfLiteral(to, false, copied) == 0)
                *rules.size = copied.size;
            return result;
        });
    });
}

} // namespace kaz::host
