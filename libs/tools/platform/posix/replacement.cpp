// SPDX-License-Identifier: Apache-2.0
// A replacement is written under a name of its own beside the target, readable by its user alone,
// and takes the target's name in one step: at every moment the target is the old file or the new
// one, as a whole. A link is followed first, since renaming over it would replace the link. What
// did not become the target is removed again, with errno kept.
#include "tools/platform/posix/replacement.h"

#include "tools/platform/posix/held_signals.h"
#include "tools/platform/posix/open_regular.h"

#include <array>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <utility>

namespace kaz::host {

namespace {

/// The target of a link, seen from where the link stands.
std::string linkTarget(const std::string& link) {
    std::array<char, PATH_MAX> text;
    const ssize_t length =
        retry([&] { return ::readlink(link.c_str(), text.data(), text.size()); });
    if (length <= 0)
        return {};
    std::string target(text.data(), static_cast<std::size_t>(length));
    return target.front() == '/' ? target : link.substr(0, link.rfind('/') + 1) + target;
}

} // namespace

std::string behindLinks(std::string path) {
    constexpr int mostLinks = 40; // as many as the system itself follows
    for (int followed = 0; followed <= mostLinks; ++followed) {
        struct stat info;
        if (look(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, info) != 0)
            return errno == ENOENT ? path : std::string();
        if (!S_ISLNK(info.st_mode))
            return path;
        path = linkTarget(path);
        if (path.empty())
            return path;
    }
    errno = ELOOP;
    return {};
}

int writeAll(int file, const void* data, std::size_t size) {
    const HeldSignals held({SIGXFSZ});
    const char* from = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t done = retry([&] { return ::write(file, from, size); });
        if (done < 0)
            return -1;
        from += done;
        size -= static_cast<std::size_t>(done);
    }
    return 0;
}

Replacement::Replacement(std::string name)
    : name_(std::move(name)),
      file_(retry([&] {
          return ::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
      })),
      exists_(file_.isOpen()) {}

Replacement::~Replacement() {
    const int saved = errno;
    if (exists_)
        retry([&] { return ::unlink(name_.c_str()); });
    errno = saved;
}

/// True when the group is the old one's. Only a privileged user may give a file away; its group
/// may still be one of the user's own.
bool Replacement::takeOwner(const struct stat& old) const {
    struct stat own;
    if (look(get(), "", AT_EMPTY_PATH, own) != 0)
        return false;
    const auto giveTo = [&](uid_t user) {
        return retry([&] { return ::fchown(get(), user, old.st_gid); }) == 0;
    };
    return (own.st_uid == old.st_uid && own.st_gid == old.st_gid) || giveTo(old.st_uid) ||
           own.st_gid == old.st_gid || giveTo(own.st_uid);
}

int Replacement::takeOver(const struct stat& old) const {
    mode_t mode = old.st_mode & 0777;
    if (!takeOwner(old))
        // Another group now has what the old one had; it gets no more than everybody does.
        mode &= ~mode_t{070} | ((mode & 07) << 3);
    return setMode(mode);
}

/// A file system without permissions refuses; the contents are whole all the same.
int Replacement::setMode(mode_t mode) const {
    if (retry([&] { return ::fchmod(get(), mode); }) == 0 || errno == EPERM || errno == EOPNOTSUPP)
        return 0;
    return -1;
}

int Replacement::sync() const {
    return retry([&] { return ::fsync(get()); });
}

int Replacement::become(const std::string& target) {
    if (!file_.close())
        return -1;
    const int result = retry([&] { return ::rename(name_.c_str(), target.c_str()); });
    exists_ = exists_ && result != 0;
    return result;
}

} // namespace kaz::host
