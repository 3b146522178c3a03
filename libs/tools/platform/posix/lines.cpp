// SPDX-License-Identifier: Apache-2.0
// Each line goes out by itself, without a buffer in this process: what was written is there when
// the process ends in whatever way. The opening must not wait, as nobody may ever read the pipe
// of that name; the writing may. Signals that a write can raise are held, so that it fails with
// errno.
#include "tools/platform/host.h"
#include "tools/platform/host_lines.h"
#include "tools/platform/posix/descriptor.h"
#include "tools/platform/posix/held_signals.h"

#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace kaz::host {

namespace {

/// A tool that was started without a standard stream must not find the file there.
std::intptr_t besideStandard(Descriptor file) {
    if (file.isOpen() && file.get() <= STDERR_FILENO)
        file = Descriptor(::fcntl(file.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    return file.release();
}

/// Only the opening does not wait: a reader may be slow.
Descriptor waitingFromHereOn(Descriptor file) {
    const int flags = file.isOpen() ? ::fcntl(file.get(), F_GETFL) : -1;
    if (flags != -1)
        ::fcntl(file.get(), F_SETFL, flags & ~O_NONBLOCK);
    return file;
}

bool isWritablePipe(int number) {
    struct stat info;
    const int flags = ::fcntl(number, F_GETFL);
    return flags != -1 && (flags & O_ACCMODE) != O_RDONLY && ::fstat(number, &info) == 0 &&
           S_ISFIFO(info.st_mode);
}

} // namespace

LineWriter::LineWriter(const char* path, bool appends) {
    if (!canName(path)) {
        failWith(ENOENT);
        return;
    }
    const int flags =
        O_WRONLY | O_CREAT | O_NOCTTY | O_CLOEXEC | O_NONBLOCK | (appends ? O_APPEND : O_TRUNC);
    const std::string name = hostPath(path);
    handle_ = besideStandard(
        waitingFromHereOn(Descriptor(retry([&] { return ::open(name.c_str(), flags, 0666); }))));
}

LineWriter LineWriter::handedOn(const char* number) {
    LineWriter result;
    const char* const end = number + std::strlen(number);
    int value = -1;
    const auto [rest, error] = std::from_chars(number, end, value);
    // Anybody can set the variable that carries the number: it is believed only when a pipe is
    // behind it. From here on no child inherits it.
    if (error == std::errc() && rest == end && value > STDERR_FILENO && isWritablePipe(value) &&
        ::fcntl(value, F_SETFD, FD_CLOEXEC) == 0)
        result.handle_ = value;
    return result;
}

LineWriter::~LineWriter() {
    Descriptor closing(static_cast<int>(handle_));
}

int LineWriter::write(std::string_view line) const {
    const HeldSignals held({SIGPIPE, SIGXFSZ});
    while (!line.empty()) {
        const ssize_t done =
            retry([&] { return ::write(static_cast<int>(handle_), line.data(), line.size()); });
        if (done < 0)
            return -1;
        line.remove_prefix(static_cast<std::size_t>(done));
    }
    return 0;
}

} // namespace kaz::host
