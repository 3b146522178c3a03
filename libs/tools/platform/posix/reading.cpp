// SPDX-License-Identifier: Apache-2.0
// Files for reading, the kind of which is looked at; the question whether a file could be opened
// is put to the system by opening it, since permissions alone do not tell.
#include "tools/platform/host.h"
#include "tools/platform/posix/file_status.h"
#include "tools/platform/posix/open_regular.h"

#include <fcntl.h>

namespace kaz::host {

std::FILE* openForReading(const char* path, FileStatus& info) {
    info = FileStatus();
    if (!canName(path)) {
        errno = ENOENT;
        return nullptr;
    }
    struct stat found;
    Descriptor file = openRegular(hostPath(path).c_str(), found);
    if (!file.isOpen())
        return nullptr;
    std::FILE* stream = retry([&] { return ::fdopen(file.get(), "r"); });
    if (stream == nullptr)
        return nullptr;
    file.release();
    info = statusOf(found);
    return stream;
}

bool canOpenForReading(const char* path) {
    if (!canName(path))
        return false;
    const std::string name = hostPath(path);
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    return Descriptor(retry([&] { return ::open(name.c_str(), flags); })).isOpen();
}

} // namespace kaz::host
