// SPDX-License-Identifier: Apache-2.0
// A directory that is not open is no object at all, so a default-constructed one costs nothing. A
// name that is handed in is one component or it is refused here: "..", a separator or an empty
// text never reaches the host, whatever the host would make of it. Results come from the host
// unchanged; whatever is done after a call, a trace or the building of a text, puts its errno
// back.
#include "tools/files/KazDirectory.h"

#include "tools/files/KazTreeCursor.h"
#include "tools/files/detail/text.h"
#include "tools/files/detail/traced.h"
#include "tools/platform/host.h"

#include <cerrno>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host = kaz::host;
using kaz::detail::orEmpty;
using kaz::detail::toText;
using kaz::detail::traced;

namespace {

// For an answer of this file's own: the host has not been asked, so errno is still the caller's.
int failWith(int number) {
    errno = number;
    return -1;
}

/// One component, which leads nowhere else. A backslash is part of a name on some
/// hosts; on the others nothing is found under such a name.
bool isComponent(const char* name) {
    const std::string_view text = orEmpty(name);
    return !text.empty() && text != "." && text != ".." && text.find('/') == text.npos;
}

/// Calls @p operation(directory, name) where both can be used.
template <typename Operation>
int onEntry(const std::unique_ptr<host::Directory>& directory, const char* name,
            Operation operation) {
    if (directory == nullptr)
        return failWith(EBADF);
    return isComponent(name) ? operation(*directory, std::string(name)) : failWith(EINVAL);
}

KazFileKind kindOf(host::Kind kind) {
    switch (kind) {
    case host::Kind::file:
        return KazFileKind::File;
    case host::Kind::directory:
        return KazFileKind::Directory;
    case host::Kind::link:
        return KazFileKind::Link;
    case host::Kind::special:
        return KazFileKind::Special;
    case host::Kind::missing:
        break;
    }
    return KazFileKind::Missing;
}

KazFileStatus statusOf(const host::FileStatus& status) {
    return {kindOf(status.kind), status.mode,   status.size,
            status.modified,     status.device, status.serial};
}

host::CopyRules rulesOf(const KazCopyRules& rules) {
    return {rules.mayReplace, rules.inPlace, rules.cutByMask, rules.goesOn, rules.size};
}

} // namespace

KazDirectory::KazDirectory() = default;

KazDirectory::KazDirectory(host::Directory&& directory) {
    if (directory.isOpen())
        directory_ = std::make_unique<host::Directory>(std::move(directory));
}

KazDirectory::KazDirectory(const char* path)
    : KazDirectory(host::Directory(*orEmpty(path) != '\0' ? path : ".")) {}

KazDirectory::KazDirectory(KazDirectory&& other) noexcept = default;
KazDirectory& KazDirectory::operator=(KazDirectory&& other) noexcept = default;
KazDirectory::~KazDirectory() = default;

bool KazDirectory::isOpen() const {
    return directory_ != nullptr;
}

void KazDirectory::close() {
    directory_.reset();
}

KazDirectory KazDirectory::openDirectory(const char* name) const {
    host::Directory opened;
    onEntry(directory_, name, [&](const host::Directory& self, const std::string& entry) {
        opened = host::Directory(self, entry);
        return 0;
    });
    return KazDirectory(std::move(opened));
}

KazDirectory KazDirectory::openParent() const {
    if (isOpen())
        return KazDirectory(directory_->above());
    errno = EBADF;
    return KazDirectory();
}

KazDirectory KazDirectory::openSelf() const {
    if (isOpen())
        return KazDirectory(directory_->again());
    errno = EBADF;
    return KazDirectory();
}

int KazDirectory::getStatus(KazFileStatus& status) const {
    host::FileStatus found;
    const int result = isOpen() ? directory_->status(found) : failWith(EBADF);
    // Written on failure, too: a caller that looks at the kind alone finds it missing.
    status = statusOf(found);
    return result;
}

int KazDirectory::getStatus(const char* name, KazFileStatus& status, bool followLinks) const {
    host::FileStatus found;
    const int result =
        onEntry(directory_, name, [&](const host::Directory& self, const std::string& entry) {
            return followLinks ? self.status(entry, found) : self.statusOfLink(entry, found);
        });
    status = statusOf(found);
    return result;
}

int KazDirectory::list(const char* pattern, std::vector<KazDirectoryEntry>& entries) const {
    entries.clear();
    if (!isOpen())
        return failWith(EBADF);
    std::vector<host::Entry> found;
    const int result = traced(directory_->list(orEmpty(pattern), found), "list", pattern);
    // Memory is taken below, which may change errno even where it succeeds.
    const int reason = errno;
    entries.reserve(found.size());
    for (const host::Entry& entry : found)
        // A walk that met them would never end.
        if (entry.name != "." && entry.name != "..")
            entries.push_back({toText(entry.name), kindOf(entry.kind), entry.expressible});
    errno = reason;
    return result;
}

bool KazDirectory::matches(const char* pattern, const char* name) {
    return host::matches(orEmpty(pattern), orEmpty(name));
}

FILE* KazDirectory::openFile(const char* name, const char* mode) const {
    FILE* stream = nullptr;
    onEntry(directory_, name, [&](const host::Directory& self, const std::string& entry) {
        if (*orEmpty(mode) == '\0')
            return failWith(EINVAL);
        stream = self.openFile(entry, mode);
        return 0;
    });
    return traced(stream, "open", name);
}

int KazDirectory::makeDirectory(const char* name, unsigned mode) const {
    const int result =
        onEntry(directory_, name, [&](const host::Directory& self, const std::string& entry) {
            return self.makeDirectory(entry, mode);
        });
    return traced(result, "make directory", name);
}

int KazDirectory::setMode(const char* name, unsigned mode) const {
    return onEntry(directory_, name, [&](const host::Directory& self, const std::string& entry) {
        return self.setMode(entry, mode);
    });
}

int KazDirectory::removeDirectory(const char* name) const {
    const int result =
        onEntry(directory_, name, [](const host::Directory& self, const std::string& entry) {
            return self.removeDirectory(entry);
        });
    return traced(result, "remove directory", name);
}

int KazDirectory::removeFile(const char* name) const {
    const int result =
        onEntry(directory_, name, [](const host::Directory& self, const std::string& entry) {
            return self.removeFile(entry);
        });
    return traced(result, "remove", name);
}

int KazDirectory::rename(const char* name, const KazDirectory& target, const char* newName,
                         bool mayReplace) const {
    const auto move = [&](const host::Directory& self, const std::string& from) {
        return onEntry(target.directory_, newName,
                       [&](const host::Directory& other, const std::string& to) {
                           return self.rename(from, other, to, mayReplace);
                       });
    };
    return traced(onEntry(directory_, name, move), "rename", name, orEmpty(newName));
}

int KazDirectory::copyFile(const KazDirectoryEntry& entry, const KazDirectory& target,
                           const KazCopyRules& rules) const {
    const auto copy = [&](const host::Directory& self, const std::string& name) {
        if (!target.isOpen())
            return failWith(EBADF);
        // For anything but a known regular file the host looks itself: a link's kind says as
        // little as a kind that the caller has made up.
        const bool isFile = entry.kind == KazFileKind::File;
        const host::Kind kind = isFile ? host::Kind::file : host::Kind::link;
        // The name counts as expressible: it has come from the caller as a text.
        return self.copyFile({name, kind, true}, *target.directory_, rulesOf(rules));
    };
    return traced(onEntry(directory_, entry.name, copy), "copy", entry.name);
}

namespace {

/// The removal of one directory's contents, as a walk that goes into a directory
/// before it removes it.
class Removal {
public:
    explicit Removal(KazDirectory top) : cursor_(std::move(top)) {}

    int run() {
        list();
        // Each entry is visited once; the depth costs memory of the heap and none of the stack.
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (level.next < level.entries.size())
                remove(level.entries[level.next++]);
            else
                leave();
        }
        return reason_ == 0 ? 0 : failWith(reason_);
    }

    /// Of what could not be removed first.
    const KazString& failed() const { return failed_; }

private:
    struct Level {
        std::vector<KazDirectoryEntry> entries;
        std::size_t next = 0;
    };

    void list() {
        Level& level = levels_.emplace_back();
        if (cursor_.directory().list("*", level.entries) != 0)
            note("");
    }

    // The entry lies in a level. list() may move the levels, so nothing looks at it afterwards.
    void remove(const KazDirectoryEntry& entry) {
        if (entry.kind == KazFileKind::Directory) {
            if (cursor_.enter(entry.name) == 0)
                list();
            else
                // One that cannot be entered may be empty, and can be removed then.
                removeEmpty(entry.name);
        } else if (cursor_.directory().removeFile(entry.name) != 0)
            note(entry.name);
    }

    void leave() {
        levels_.pop_back();
        if (levels_.empty())
            return;
        const Level& above = levels_.back();
        // When the way up has been lost there is no open directory, and the removal fails and is
        // noted.
        cursor_.leave();
        removeEmpty(above.entries[above.next - 1].name);
    }

    void removeEmpty(const KazString& name) {
        if (cursor_.directory().removeDirectory(name) != 0)
            note(name);
    }

    /// The first failure is the one that tells; those above it only follow from it.
    void note(const KazString& name) {
        if (reason_ != 0)
            return;
        reason_ = errno;
        failed_ = kaz::detail::joinPath(cursor_.getPath().getValue(), name.getValue());
    }

    KazTreeCursor cursor_;
    std::vector<Level> levels_;
    KazString failed_;
    int reason_ = 0;
};

} // namespace

int KazDirectory::removeTree(const char* name, KazString* failed) const {
    KazFileStatus status;
    KazString inside;
    // The link and not what it leads to: a tree behind a link is somebody else's.
    int result = getStatus(name, status);
    if (result == 0 && status.kind != KazFileKind::Directory)
        result = removeFile(name);
    else if (result == 0) {
        KazDirectory directory = openDirectory(name);
        // One that cannot be opened may still be empty, and then it can be removed.
        const bool isOpen = directory.isOpen();
        const int unopened = errno;
        Removal removal(std::move(directory));
        const int emptied = isOpen ? removal.run() : -1;
        const int reason = isOpen ? errno : unopened;
        result = removeDirectory(name);
        // What could be removed at last was empty, whatever went wrong before.
        if (emptied != 0 && result != 0) {
            inside = removal.failed();
            errno = reason;
        }
    }
    // The path is built after the failure that it tells of.
    const int reason = errno;
    if (result != 0 && failed != nullptr)
        *failed = kaz::detail::joinPath(orEmpty(name), inside.getValue());
    errno = reason;
    return result;
}
