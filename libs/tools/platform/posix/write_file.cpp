// SPDX-License-Identifier: Apache-2.0
// A file that is there or comes to be is replaced as a whole, and keeps its owner and permissions
// as far as this user may give them. What is no file, a pipe or a device, has no contents to
// replace and is written into.
#include "tools/platform/host.h"
#include "tools/platform/posix/open_regular.h"
#include "tools/platform/posix/replacement.h"

#include <algorithm>
#include <fcntl.h>
#include <memory>

namespace kaz::host {

namespace {

/// A name that is free beside @p target. It begins as the target's does, which may leave
/// no room for more.
std::unique_ptr<Replacement> openBeside(const std::string& target) {
    constexpr std::size_t mostOfName = 100;
    constexpr int attempts = 1000;
    const std::size_t name = target.rfind('/') + 1;
    const std::string stem = target.substr(0, std::min(target.size(), name + mostOfName)) + ".new";
    std::unique_ptr<Replacement> result;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        result = std::make_unique<Replacement>(stem + std::to_string(attempt));
        if (result->isOpen() || errno != EEXIST)
            break;
    }
    return result;
}

/// A pipe or a device, which cannot be replaced.
int writeInto(const std::string& target, const void* data, std::size_t size) {
    Descriptor file(retry([&] { return ::open(target.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC); }));
    if (!file.isOpen() || writeAll(file.get(), data, size) != 0)
        return -1;
    return file.close() ? 0 : -1;
}

int replace(const std::string& target, const struct stat* old, const void* data, std::size_t size) {
    const std::unique_ptr<Replacement> file = openBeside(target);
    if (!file->isOpen() || writeAll(file->get(), data, size) != 0)
        return -1;
    // A new file gets what an opening would have given it.
    const int granted = old != nullptr ? file->takeOver(*old)
                                       : file->setMode(0666 & ~static_cast<mode_t>(fileMask()));
    return granted == 0 ? file->become(target) : -1;
}

} // namespace

int writeFile(const char* path, const void* data, std::size_t size) {
    if (!canName(path))
        return failWith(ENOENT);
    const std::string target = behindLinks(hostPath(path));
    if (target.empty())
        return -1;
    struct stat old;
    if (look(AT_FDCWD, target.c_str(), AT_SYMLINK_NOFOLLOW, old) != 0)
        return errno == ENOENT ? replace(target, nullptr, data, size) : -1;
    if (S_ISDIR(old.st_mode))
        return failWith(EISDIR);
    return S_ISREG(old.st_mode) ? replace(target, &old, data, size) : writeInto(target, data, size);
}

} // namespace kaz::host
