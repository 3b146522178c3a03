// SPDX-License-Identifier: Apache-2.0
// A copy is whole or absent: it comes to be without a name or under a name of its own, and
// gets the target's when its contents and permissions are complete. Which of the two ways
// depends on whether the name is free and on what the file system can do. Only copies "in
// place" are seen growing, on request. Cleaning up after a failure keeps its errno.
#include "tools/platform/posix/copy_at.h"

#include "tools/platform/host.h"
#include "tools/platform/posix/contents.h"
#include "tools/platform/posix/descriptor.h"
#include "tools/platform/posix/file_status.h"
#include "tools/platform/posix/open_regular.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace kaz::host {

namespace {

/// May the copy of @p source take the place of @p target?
int checkReplacement(const struct stat& target, const struct stat& source, bool mayReplace) {
    if (!mayReplace)
        return failWith(EEXIST);
    if (S_ISDIR(target.st_mode))
        return failWith(EISDIR);
    return sameFile(statusOf(target), statusOf(source)) ? failWith(EINVAL) : 0;
}

/// The directory part of a path, "" for a name alone.
std::string stemOf(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return std::string(path, slash != nullptr ? slash + 1 : path);
}

/// A file without a name, which becomes the target when it is complete. Until
/// then the system removes it together with the process, however that ends.
class Unnamed {
public:
    Unnamed(int dir, const char* target, mode_t mode) {
        const std::string stem = stemOf(target);
        const char* place = stem.empty() ? "." : stem.c_str();
        file_ = Descriptor(retry(
            [&] { return ::openat(dir, place, O_WRONLY | O_TMPFILE | O_CLOEXEC, mode & 0777); }));
    }

    bool isOpen() const { return file_.isOpen(); }
    int get() const { return file_.get(); }

    /// EEXIST where the name is taken. ENOENT also where the host lets only
    /// privileged users name a file by its descriptor, or has no names for these.
    int become(int dir, const char* target) {
        if (nameIt(dir, target) != 0)
            return -1;
        // A file system of the network may tell only now that it had no room.
        if (file_.close())
            return 0;
        const int reason = errno; // what was written is lost
        retry([&] { return ::unlinkat(dir, target, 0); });
        return failWith(reason);
    }

private:
    int nameIt(int dir, const char* target) const {
        const auto link = [&](int from, const char* name, int flags) {
            return retry([&] { return ::linkat(from, name, dir, target, flags); });
        };
        // By the descriptor without a privilege only since Linux 6.10; the way through /proc needs
        // it mounted.
        if (link(file_.get(), "", AT_EMPTY_PATH) == 0)
            return 0;
        if (errno != ENOENT)
            return -1;
        const std::string name = "/proc/self/fd/" + std::to_string(file_.get());
        return link(AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW);
    }

    Descriptor file_;
};

/// The file beside the target that becomes the target. Removed again unless it
/// got there.
class Beside {
public:
    Beside(int dir, const char* target) : dir_(dir) {
        const std::string stem = stemOf(target);
        static unsigned counter = 0;
        do {
            std::array<char, 48> last;
            std::snprintf(last.data(), last.size(), ".mox-%ld-%u.part",
                          static_cast<long>(::getpid()), counter++);
            name_ = stem + last.data();
            file_ = Descriptor(retry([&] {
                return ::openat(dir_, name_.c_str(),
                                O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
            }));
        } while (!file_.isOpen() && errno == EEXIST);
        exists_ = file_.isOpen();
    }
    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;
    ~Beside() {
        const int saved = errno;
        if (exists_)
            retry([&] { return ::unlinkat(dir_, name_.c_str(), 0); });
        errno = saved;
    }

    bool isOpen() const { return file_.isOpen(); }
    int get() const { return file_.get(); }

    /// Takes the target's name where that is free, the common case, which then
    /// needs no look at the target first. EEXIST where it is not; EINVAL where the
    /// file system has no such operation.
    int becomeNew(const char* target) {
        return file_.close() ? moveTo(target, RENAME_NOREPLACE) : -1;
    }
    int become(const char* target) { return moveTo(target, 0); }

private:
    int moveTo(const char* target, unsigned flags) {
        const int result =
            retry([&] { return ::renameat2(dir_, name_.c_str(), dir_, target, flags); });
        exists_ = exists_ && result != 0;
        return result;
    }

    int dir_;
    std::string name_;
    Descriptor file_;
    bool exists_ = false;
};

/// File systems without permissions refuse; the contents are whole all the same.
int setPermissions(int target, mode_t mode) {
    if (retry([&] { return ::fchmod(target, mode & 0777); }) == 0 || errno == EPERM ||
        errno == EOPNOTSUPP)
        return 0;
    return -1;
}

/// The same for a file that was created with them. It mostly has got them: a look is
/// cheaper than setting them, and bits that are @p granted need none. Of 10,000 small
/// files each look would take 4 % of the time.
int keepPermissions(int target, mode_t mode, unsigned& granted) {
    mode &= 0777;
    if ((mode & ~granted) == 0)
        return 0;
    struct stat info;
    if (look(target, "", AT_EMPTY_PATH, info) != 0 || (info.st_mode & 0777) != mode)
        return setPermissions(target, mode);
    granted |= mode;
    return 0;
}

mode_t cutByMask(mode_t mode, const CopyRules& rules) {
    return rules.cutByMask ? mode & ~static_cast<mode_t>(fileMask()) : mode;
}

enum class Outcome { done, failed, notThisWay };

/// For a name that is free. A small file costs 3 microseconds more than one that
/// is created under its name and written there, but is whole or absent even when
/// the process is killed; a rename would cost 4.
Outcome copyUnnamed(int source, const struct stat& info, Place target, const CopyRules& rules,
                    CopyKnowledge& known) {
    Unnamed to(target.directory, target.name, info.st_mode);
    if (!to.isOpen())
        return Outcome::notThisWay;
    if (copyContents(source, info, to.get(), rules) != 0 ||
        (!rules.cutByMask && keepPermissions(to.get(), info.st_mode, known.granted) != 0))
        return Outcome::failed;
    if (to.become(target.directory, target.name) == 0)
        return Outcome::done;
    return errno == ENOENT ? Outcome::notThisWay : Outcome::failed;
}

/// For a name that is taken, and for hosts without the other way.
int copyBeside(int source, const struct stat& info, Place target, const CopyRules& rules) {
    Beside to(target.directory, target.name);
    if (!to.isOpen() || copyContents(source, info, to.get(), rules) != 0 ||
        setPermissions(to.get(), cutByMask(info.st_mode, rules)) != 0)
        return -1;
    if (to.becomeNew(target.name) == 0)
        return 0;
    // The other failures would be the same with a replacing rename.
    if (errno != EEXIST && errno != EINVAL && errno != ENOSYS)
        return -1;
    struct stat existing;
    if (look(target.directory, target.name, AT_SYMLINK_NOFOLLOW, existing) == 0 &&
        checkReplacement(existing, info, rules.mayReplace) != 0)
        return -1;
    return to.become(target.name);
}

/// Written under its name at once. Of a copy that fails nothing is left.
int copyInPlace(int source, const struct stat& info, Place target, const CopyRules& rules,
                CopyKnowledge& known) {
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
    Descriptor to(
        retry([&] { return ::openat(target.directory, target.name, flags, info.st_mode & 0777); }));
    if (!to.isOpen())
        return -1;
    if (copyContents(source, info, to.get(), rules) == 0 &&
        (rules.cutByMask || keepPermissions(to.get(), info.st_mode, known.granted) == 0) &&
        to.close())
        return 0;
    const int reason = errno;
    retry([&] { return ::unlinkat(target.directory, target.name, 0); });
    return failWith(reason);
}

} // namespace

int copyAt(Place source, Place target, const CopyRules& rules, CopyKnowledge& known) {
    struct stat info;
    const Descriptor from = openRegular(source.directory, source.name, known.isPlain, info);
    if (!from.isOpen())
        return -1;
    if (rules.inPlace)
        return copyInPlace(from.get(), info, target, rules, known);
    // Before the work where that is much, and where the name is likely taken.
    struct stat existing;
    const bool isLarge = info.st_size >= static_cast<off_t>(smallSize);
    const bool isTaken = (rules.mayReplace || isLarge) &&
                         look(target.directory, target.name, AT_SYMLINK_NOFOLLOW, existing) == 0;
    if (isTaken && checkReplacement(existing, info, rules.mayReplace) != 0)
        return -1;
    if (!isTaken) {
        switch (copyUnnamed(from.get(), info, target, rules, known)) {
        case Outcome::done:
            return 0;
        case Outcome::failed:
            if (errno == EEXIST && rules.mayReplace)
                break;
            return -1;
        case Outcome::notThisWay:
            break;
        }
        // The first way has read the source already, and begins anew in the second.
        if (retry([&] { return ::lseek(from.get(), 0, SEEK_SET); }) != 0)
            return -1;
    }
    return copyBeside(from.get(), info, target, rules);
}

} // namespace kaz::host
