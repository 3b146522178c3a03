#include "tools/platform/posix/copy_at.h"

#include "tools/platform/posix/descriptor.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

namespace kaz::host {

namespace {

/// Files up to this size take one read and one write, which beats the set-up of
/// a copy inside the kernel.
constexpr std::size_t smallSize = 64 * 1024;

/// A handler waits at most for one such piece of a copy inside the kernel.
constexpr std::size_t kernelPiece = std::size_t{64} << 20;

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Opening a pipe or a device can block or do something, so the kind is asked
/// first; a file that is swapped in between is caught after the opening.
int checkRegular(const struct stat& info) {
    if (S_ISREG(info.st_mode))
        return 0;
    return failWith(S_ISDIR(info.st_mode) ? EISDIR : EINVAL);
}

Descriptor openSource(int dir, const char* name, struct stat& info) {
    if (::fstatat(dir, name, &info, 0) != 0 || checkRegular(info) != 0)
        return Descriptor();
    Descriptor source(
        retry([&] { return ::openat(dir, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    if (!source.isOpen() || ::fstat(source.get(), &info) != 0 || checkRegular(info) != 0)
        return Descriptor();
    return source;
}

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

    int become(const char* target, bool mayReplace) {
        if (!file_.close())
            return -1;
        const int result = mayReplace ? ::renameat(dir_, name_.c_str(), dir_, target)
                                      : ::linkat(dir_, name_.c_str(), dir_, target, 0);
        exists_ = exists_ && !(mayReplace && result == 0);
        return result;
    }

private:
    int dir_;
    std::string name_;
    Descriptor file_;
    bool exists_ = false;
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

/// From the current offsets to the end of the source. @p expected is the size as
/// examined: reaching it in one go saves the read that only finds the end. A
/// size of 0 proves nothing, some file systems give it to files with contents.
int copyByBuffer(int source, int target, std::size_t expected) {
    std::array<char, smallSize> buffer;
    for (std::size_t total = 0;;) {
        const ssize_t got = retry([&] { return ::read(source, buffer.data(), buffer.size()); });
        if (got <= 0)
            return static_cast<int>(got);
        if (writeAll(target, buffer.data(), static_cast<std::size_t>(got)) != 0)
            return -1;
        total += static_cast<std::size_t>(got);
        if (total == expected && static_cast<std::size_t>(got) < buffer.size())
            return 0;
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
            return copyByBuffer(source, target, 0);
    }
}

/// File systems without permissions refuse; the contents are whole all the same.
int keepPermissions(int target, mode_t mode) {
    if (::fchmod(target, mode & 0777) == 0 || errno == EPERM || errno == EOPNOTSUPP)
        return 0;
    return -1;
}

} // namespace

int copyAt(int sourceDir, const char* source, int targetDir, const char* target, bool mayReplace) {
    struct stat info;
    Descriptor from = openSource(sourceDir, source, info);
    if (!from.isOpen() || checkTarget(targetDir, target, info, mayReplace) != 0)
        return -1;
    Beside to(targetDir, target);
    if (!to.isOpen())
        return -1;
    const auto size = static_cast<std::size_t>(info.st_size);
    const int copied = size > smallSize ? copyLarge(from.get(), to.get())
                                        : copyByBuffer(from.get(), to.get(), size);
    if (copied != 0 || keepPermissions(to.get(), info.st_mode) != 0)
        return -1;
    return to.become(target, mayReplace);
}

} // namespace kaz::host
