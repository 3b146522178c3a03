// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/posix/open_regular.h"

#include <fcntl.h>

namespace kaz::host {

namespace {

int checkRegular(const struct stat& info) {
    if (S_ISREG(info.st_mode))
        return 0;
    return failWith(S_ISDIR(info.st_mode) ? EISDIR : EINVAL);
}

} // namespace

/// Opening a pipe or a device can block or do something, so the kind is known
/// first; a file that is swapped in between is caught after the opening.
Descriptor openRegular(int dir, const char* name, bool isPlain, struct stat& info) {
    if (!isPlain && (look(dir, name, 0, info) != 0 || checkRegular(info) != 0))
        return Descriptor();
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (isPlain ? O_NOFOLLOW : 0);
    Descriptor source(retry([&] { return ::openat(dir, name, flags); }));
    if (!source.isOpen() || look(source.get(), "", AT_EMPTY_PATH, info) != 0 ||
        checkRegular(info) != 0)
        return Descriptor();
    return source;
}

} // namespace kaz::host
