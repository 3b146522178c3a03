// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/posix/outlet.h"

#include "tools/platform/host.h"

#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kaz::host {

Descriptor besideStandard(Descriptor descriptor) {
    if (!descriptor.isOpen() || descriptor.get() > STDERR_FILENO)
        return descriptor;
    return Descriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

bool Outlet::open(OutputSink* sink) {
    std::array<int, 2> ends{-1, -1};
    // Closed on exec from the first moment: another thread may start a program at any time.
    if (retry([&] { return ::pipe2(ends.data(), O_CLOEXEC); }) != 0)
        return false;
    sink_ = sink;
    reading_ = besideStandard(Descriptor(ends[0]));
    writing_ = besideStandard(Descriptor(ends[1]));
    return reading_.isOpen() && writing_.isOpen();
}

void Outlet::take(short found) {
    constexpr int patience = 8;
    if (found == 0)
        return;
    // A pipe at its end has POLLHUP without POLLIN.
    if ((found & POLLIN) == 0 || (read(size_) <= 0 && ++failures_ > patience))
        reading_.close();
}

void Outlet::takeRest() {
    int there = 0;
    // A read of more than what is there would wait for whoever still has the other end.
    if (!reading_.isOpen() || ::ioctl(reading_.get(), FIONREAD, &there) != 0)
        return;
    while (there > 0) {
        const ssize_t got = read(std::min(size_, static_cast<std::size_t>(there)));
        if (got <= 0 && ++failures_ > 1)
            break;
        there -= static_cast<int>(std::max<ssize_t>(got, 0));
    }
}

ssize_t Outlet::read(std::size_t most) {
    std::array<char, size_> buffer;
    const ssize_t got = retry([&] { return ::read(reading_.get(), buffer.data(), most); });
    if (got > 0)
        sink_->write(buffer.data(), static_cast<std::size_t>(got));
    return got;
}

} // namespace kaz::host
