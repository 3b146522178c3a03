// SPDX-License-Identifier: Apache-2.0
// Reads are at offsets and move no position, so that several parts of a program can share the
// file. A short result means the end or a failure, and errno is only touched by the latter.
#include "tools/platform/host.h"
#include "tools/platform/posix/open_regular.h"

#include <fcntl.h>

namespace kaz::host {

namespace {

int openFor(const char* path) {
    struct stat info;
    return canName(path) ? openRegular(hostPath(path).c_str(), info).release() : failWith(ENOENT);
}

} // namespace

ReadableFile::ReadableFile(const char* path) : handle_(openFor(path)) {}

ReadableFile::~ReadableFile() {
    Descriptor closing(static_cast<int>(handle_));
}

std::size_t ReadableFile::read(std::uint64_t offset, void* to, std::size_t size) const {
    std::size_t done = 0;
    const int before = errno;
    while (done < size) {
        const ssize_t count = retry([&] {
            return ::pread(static_cast<int>(handle_), static_cast<char*>(to) + done, size - done,
                           static_cast<off_t>(offset + done));
        });
        if (count == 0)
            errno = before; // an interruption that was got over is no failure
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

} // namespace kaz::host
