// SPDX-License-Identifier: Apache-2.0
#include "testkit/detail/passing_file.h"

#include <cstdlib>
#include <unistd.h>

int moxkit::detail::passingFile(bool) {
    char name[] = "/tmp/moxkitXXXXXX";
    const int file = mkstemp(name);
    if (file < 0)
        std::abort();
    // Gone with its last descriptor, however the test ends.
    unlink(name);
    return file;
}

std::string moxkit::detail::contents(int file) {
    std::string text;
    char buffer[4096];
    off_t at = 0;
    // pread() leaves the position alone, which the stream that writes shares.
    for (ssize_t n; (n = pread(file, buffer, sizeof buffer, at)) > 0; at += n)
        text.append(buffer, static_cast<std::size_t>(n));
    return text;
}
