// SPDX-License-Identifier: Apache-2.0
// Only regular files are opened, and never so that the opening waits: a pipe without a writer
// would hold a tool for ever, and some devices do something when they are opened. The kind is
// looked at on the open file, since a name can be exchanged between a look at it and the opening.
#include "tools/platform/posix/open_regular.h"

#include <fcntl.h>

namespace kaz::host {

namespace {

int checkRegular(const struct stat& info) {
    if (S_ISREG(info.st_mode))
        return 0;
    return failWith(S_ISDIR(info.st_mode) ? EISDIR : EINVAL);
}

Descriptor openAndLook(int dir, const char* name, int flags, struct stat& info) {
    constexpr int always = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    Descriptor source(retry([&] { return ::openat(dir, name, always | flags); }));
    if (!source.isOpen() || look(source.get(), "", AT_EMPTY_PATH, info) != 0 ||
        checkRegular(info) != 0)
        return Descriptor();
    return source;
}

} // namespace

Descriptor openRegular(const char* path, struct stat& info) {
    Descriptor source = openAndLook(AT_FDCWD, path, 0, info);
    if (!source.isOpen() && errno == ENXIO)
        errno = EINVAL; // a socket, or a device that nothing is behind
    return source;
}

/// A file that is exchanged between look and opening is caught after the opening.
Descriptor openRegular(int dir, const char* name, bool isPlain, struct stat& info) {
    if (!isPlain && (look(dir, name, 0, info) != 0 || checkRegular(info) != 0))
        return Descriptor();
    return openAndLook(dir, name, isPlain ? O_NOFOLLOW : 0, info);
}

} // namespace kaz::host
