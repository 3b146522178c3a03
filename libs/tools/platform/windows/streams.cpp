// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/host.h"
#include "tools/platform/host_streams.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <io.h>

namespace kaz::host {

// The runtime library keeps the three numbers for itself: a process without
// standard streams opens its first file as number 3.
void holdStandardStreams() {}

void closeAllStreams() {
    std::fflush(nullptr);
    ::_fcloseall(); // all but the standard ones
    // Input that was read ahead is dropped: it is at its end from here on.
    std::fseek(stdin, 0, SEEK_END);
    std::fflush(stdin);
    // The null device in place of the standard ones ends them for whoever is at
    // the other end, and keeps a later file from taking their numbers.
    const int nothing = ::_open("NUL", _O_RDWR);
    for (int standard = 0; standard <= 2 && nothing >= 0; ++standard)
        if (nothing != standard)
            ::_dup2(nothing, standard);
    if (nothing > 2)
        ::_close(nothing);
}

void passBytes(std::FILE* stream) {
    ::_setmode(::_fileno(stream), _O_BINARY);
}

std::string errorText(int number) {
    if (number < 0 || number >= _sys_nerr)
        return {};
    const char* text = std::strerror(number);
    return std::strcmp(text, "Unknown error") != 0 ? text : "";
}

} // namespace kaz::host
