// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/host.h"
#include "tools/platform/host_streams.h"
#include "tools/platform/posix/descriptor.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace kaz::host {

void holdStandardStreams() {
    // Each open takes the lowest free number, which is the one that is missing.
    // Opened the wrong way round, so that reading and writing still fail and a
    // tool whose output is its result can tell.
    for (int standard = 0; standard <= 2; ++standard)
        if (::fcntl(standard, F_GETFD) == -1)
            static_cast<void>(
                retry([=] { return ::open("/dev/null", standard == 0 ? O_WRONLY : O_RDONLY); }));
}

void closeAllStreams() {
    // The C library writes out and empties every stream but keeps descriptors
    // open. The null device in place of the standard ones ends them for whoever
    // is at the other end, and keeps a file that is opened later from becoming
    // the standard output by accident.
    ::fcloseall();
    // A stream that is missing would get the very descriptor that ends below.
    holdStandardStreams();
    const Descriptor nothing(retry([] { return ::open("/dev/null", O_RDWR | O_CLOEXEC); }));
    for (int standard = 0; standard <= 2 && nothing.isOpen(); ++standard) {
        // A terminal ends with the process: who holds its other end may close that in
        // turn, and the hang-up would end this process before it could give its status.
        if (::isatty(standard) != 0)
            static_cast<void>(::fcntl(standard, F_DUPFD_CLOEXEC, 3));
        retry([&] { return ::dup2(nothing.get(), standard); });
    }
}

std::string errorText(int number) {
    const char* text = ::strerrordesc_np(number);
    return text != nullptr ? text : "";
}

void passBytes(std::FILE*) {}

// The runtime library does it by itself.
void terminateOnUncaughtRethrow() {}

} // namespace kaz::host
