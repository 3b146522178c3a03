// SPDX-License-Identifier: Apache-2.0
// Every function opens the directory of the last component and then speaks of an entry in it. So
// the same code serves paths of any length, and a link that is the last component is itself what
// is removed or renamed.
#include "tools/files/tistatus.h"

#include "tools/files/detail/pattern.h"
#include "tools/files/detail/text.h"
#include "tools/messages/trace.h"
#include "tools/platform/host.h"

#include <cerrno>
#include <string>

using kaz::detail::isSeparator;
using kaz::detail::orEmpty;

namespace {

/// The open directory of a path's last component, and that component.
class Place {
public:
    explicit Place(const char* path) {
        std::string text = orEmpty(path);
        // One is left of a root, which would be no name at all otherwise.
        while (text.size() > 1 && isSeparator(text.back()))
            text.pop_back();
        const std::size_t start = kaz::detail::wildcardStart(text.c_str());
        name_ = text.substr(start);
        path_ = text.substr(0, start);
        // "" names nothing, but the current directory when it stands before a name.
        if (!text.empty())
            directory_ = KazDirectory(path_.c_str());
        else
            errno = ENOENT;
    }

    bool isOpen() const { return directory_.isOpen(); }
    const KazDirectory& directory() const { return directory_; }
    const std::string& directoryPath() const { return path_; }
    const char* name() const { return name_.c_str(); }
    /// Does it name an entry, and not the directory itself or one around it?
    bool isEntry() const { return !name_.empty() && name_ != "." && name_ != ".."; }

private:
    KazDirectory directory_;
    std::string path_; ///< the directory's
    std::string name_;
};

int notThere(KazFileStatus& status) {
    status = KazFileStatus();
    return -1;
}

/// Calls @p operation(directory, name).
template <typename Operation>
int onPlace(const Place& place, Operation operation) {
    KAZ_TRACE("files", "in directory %s", place.directoryPath().c_str());
    return place.isOpen() ? operation(place.directory(), place.name()) : -1;
}

} // namespace

int TI_status(const char* path, KazFileStatus& status, bool followLinks) {
    const Place place(path);
    if (!place.isOpen())
        return notThere(status);
    if (place.isEntry())
        return place.directory().getStatus(place.name(), status, followLinks);
    // A root, "." and ".." name directories that are no entry of another one here.
    // Opened by the path as it was given: a Place has no entry to ask about.
    const KazDirectory self(path);
    return self.isOpen() ? self.getStatus(status) : notThere(status);
}

bool TI_exists(const char* path) {
    KazFileStatus status;
    return TI_status(path, status, false) == 0;
}

bool TI_isDirectory(const char* path) {
    KazFileStatus status;
    return TI_status(path, status) == 0 && status.kind == KazFileKind::Directory;
}

bool TI_isFile(const char* path) {
    KazFileStatus status;
    return TI_status(path, status) == 0 && status.kind == KazFileKind::File;
}

int TI_access(const char* path, int mode) {
    return kaz::host::access(orEmpty(path), mode);
}

int TI_remove(const char* path) {
    return onPlace(Place(path), [](const KazDirectory& directory, const char* name) {
        return directory.removeFile(name);
    });
}

int TI_rmdir(const char* path) {
    return onPlace(Place(path), [](const KazDirectory& directory, const char* name) {
        return directory.removeDirectory(name);
    });
}

int TI_rmtree(const char* path, KazString* failed) {
    const Place place(path);
    KazString inside;
    const int result = onPlace(place, [&](const KazDirectory& directory, const char* name) {
        return directory.removeTree(name, &inside);
    });
    const int reason = errno;
    if (result != 0 && failed != nullptr) {
        *failed = kaz::detail::joinPath(place.directoryPath(), inside.getValue());
    }
    errno = reason;
    return result;
}

int TI_rename(const char* from, const char* to, bool mayReplace) {
    // The source first, so that errno tells of it when both are missing.
    const Place source(from);
    if (!source.isOpen())
        return -1;
    const Place target(to);
    return onPlace(target, [&](const KazDirectory& directory, const char* name) {
        return source.directory().rename(source.name(), directory, name, mayReplace);
    });
}
