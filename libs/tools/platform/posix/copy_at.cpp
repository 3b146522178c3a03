#include "tools/platform/posix/copy_at.h"

#include "tools/platform/posix/descriptor.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace kaz::host {

namespace {

/// Files below this size take one read and one write, which beats the set-up of
/// a copy inside the kernel.
constexpr std::size_t smallSize = 64 * 1024;

/// A handler waits at most for one such piece of a copy inside the kernel.
constexpr std::size_t kernelPiece = std::size_t{64} << 20;

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Opening a pipe or a device can block or do something, so the kind is known
/// first; a file that is swapped in between is caught after the opening.
int checkRegular(const struct stat& info) {
    if (S_ISREG(info.st_mode))
        return 0;
    return failWith(S_ISDIR(info.st_mode) ? EISDIR : EINVAL);
}

/// A plain file is known to be one from the listing. Anything else is examined
/// before it is opened.
Descriptor openSource(int dir, const char* name, bool isPlain, struct stat& info) {
    if (!isPlain && (::fstatat(dir, name, &info, 0) != 0 || checkRegular(info) != 0))
        return Descriptor();
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (isPlain ? O_NOFOLLOW : 0);
    Descriptor source(retry([&] { return ::openat(dir, name, flags); }));
    if (!source.isOpen() || ::fstat(source.get(), &info) != 0 || checkRegular(info) != 0)
        return Descriptor();
    return source;
}

/// May the copy of @p source take the place of what is at the target?
int checkTarget(int dir, const char* name, const struct stat& source, bool mayReplace) {
    struct stat info;
    if (::fstatat(dir, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? 0 : -1;
    if (!mayReplace)
        return failWith(EEXIST);
    if (S_ISDIR(info.st_mode))
        return failWith(EISDIR);
    return isSameFile(info, source) ? failWith(EINVAL) : 0;
}

/// The file beside the target that becomes the target. Removed again unless it
/// got there.
class Beside {
public:
    Beside(int dir, const char* target) : dir_(dir) {
        const char* slash = std::strrchr(target, '/');
        const std::string stem(target, slash != nullptr ? slash + 1 - target : 0);
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
            ::unlinkat(dir_, name_.c_str(), 0);
        errno = saved;
    }

    bool isOpen() const { return file_.isOpen(); }
    int get() const { return file_.get(); }

    /// Takes the target's name where that is free, the common case, which then
    /// needs no look at the target first. EEXIST where it is not; EINVAL where the
    /// file system has no such operation.
    int becomeNew(const char* target) {
        return taken(
            file_.close() ? ::renameat2(dir_, name_.c_str(), dir_, target, RENAME_NOREPLACE) : -1);
    }
    int become(const char* target) { return taken(::renameat(dir_, name_.c_str(), dir_, target)); }

private:
    int taken(int result) {
        exists_ = exists_ && result != 0;
        return result;
    }

    int dir_;
    std::string name_;
    Descriptor file_;
    bool exists_ = false;
};

/// No signal ends the process, or runs a handler that does, in its lifetime.
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_;
};

int writeAll(int file, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t done = retry([&] { return ::write(file, data, size); });
        if (done < 0)
            return -1;
        data += done;
        size -= static_cast<std::size_t>(done);
    }
    return 0;
}

int copyByBuffer(int source, int target) {
    std::array<char, smallSize> buffer;
    for (;;) {
        const ssize_t got = retry([&] { return ::read(source, buffer.data(), buffer.size()); });
        if (got <= 0)
            return static_cast<int>(got);
        if (writeAll(target, buffer.data(), static_cast<std::size_t>(got)) != 0)
            return -1;
    }
}

/// Real failures of the copy; anything else means "not between these two".
bool isFinal(int number) {
    return number == ENOSPC || number == EDQUOT || number == EFBIG || number == EIO;
}

int copyLarge(int source, int target) {
    for (;;) {
        const ssize_t done = retry(
            [&] { return ::copy_file_range(source, nullptr, target, nullptr, kernelPiece, 0); });
        if (done < 0 && isFinal(errno))
            return -1;
        // Both offsets stand behind what was copied so far, also where the
        // kernel claims the end too early: reading on settles it.
        if (done <= 0)
            return copyByBuffer(source, target);
    }
}

/// File systems without permissions refuse; the contents are whole all the same.
int keepPermissions(int target, mode_t mode) {
    if (::fchmod(target, mode & 0777) == 0 || errno == EPERM || errno == EOPNOTSUPP)
        return 0;
    return -1;
}

/// A small file under its final name at once. Renaming would cost more than all
/// the rest; with the contents in memory and signals held, the target is still
/// whole or absent unless the process is killed outright. EEXIST when the name is
/// taken.
int createWhole(int dir, const char* name, std::string_view contents, mode_t mode) {
    const SignalsHeld held;
    Descriptor target(::openat(dir, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode & 0777));
    if (!target.isOpen())
        return -1;
    if (writeAll(target.get(), contents.data(), contents.size()) == 0 &&
        keepPermissions(target.get(), mode) == 0 && target.close())
        return 0;
    const int reason = errno;
    ::unlinkat(dir, name, 0);
    return failWith(reason);
}

enum class Outcome { done, failed, notThisWay };

/// The short way for small files and new names.
Outcome copySmall(int source, const struct stat& info, int targetDir, const char* target) {
    if (info.st_size >= static_cast<off_t>(smallSize))
        return Outcome::notThisWay;
    std::array<char, smallSize> buffer;
    const ssize_t got = retry([&] { return ::read(source, buffer.data(), buffer.size()); });
    if (got == info.st_size &&
        createWhole(targetDir, target, {buffer.data(), static_cast<std::size_t>(got)},
                    info.st_mode) == 0)
        return Outcome::done;
    if (got >= 0 && got != info.st_size)
        errno = EEXIST; // its size was no promise: from the start the long way
    if (errno != EEXIST || ::lseek(source, 0, SEEK_SET) != 0)
        return Outcome::failed;
    return Outcome::notThisWay;
}

/// The long way: beside the target first.
int copyBeside(int source, const struct stat& info, int targetDir, const char* target,
               bool mayReplace) {
    if (!mayReplace && checkTarget(targetDir, target, info, mayReplace) != 0)
        return -1; // before the work: it is no rare case
    Beside to(targetDir, target);
    if (!to.isOpen() || copyLarge(source, to.get()) != 0 ||
        keepPermissions(to.get(), info.st_mode) != 0)
        return -1;
    if (to.becomeNew(target) == 0)
        return 0;
    if (errno != EEXIST && errno != EINVAL && errno != ENOSYS)
        return -1;
    if (checkTarget(targetDir, target, info, mayReplace) != 0)
        return -1;
    return to.become(target);
}

} // namespace

int copyAt(int sourceDir, const char* source, bool isPlain, int targetDir, const char* target,
           bool mayReplace) {
    struct stat info;
    const Descriptor from = openSource(sourceDir, source, isPlain, info);
    if (!from.isOpen())
        return -1;
    switch (copySmall(from.get(), info, targetDir, target)) {
    case Outcome::done:
        return 0;
    case Outcome::failed:
        return -1;
    case Outcome::notThisWay:
        break;
    }
    return copyBeside(from.get(), info, targetDir, target, mayReplace);
}

} // namespace kaz::host
