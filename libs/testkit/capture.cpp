// SPDX-License-Identifier: Apache-2.0
// Descriptors are exchanged and not C++ streams: the library prints by stdio, children by the
// descriptors that they inherit. Everything is flushed at each change, or text of one side would
// come out on the other.
#include "testkit/capture.h"

#include "testkit/detail/passing_file.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <unistd.h>

namespace moxkit {

namespace {

constexpr int streams[2] = {1, 2};

void flushAll() {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
}

} // namespace

Capture::Capture() {
    flushAll();
    for (int i = 0; i < 2; ++i) {
        saved_[i] = dup(streams[i]);
        file_[i] = detail::passingFile(true);
        dup2(file_[i], streams[i]);
    }
}

Capture::~Capture() {
    flushAll();
    for (int i = 0; i < 2; ++i) {
        dup2(saved_[i], streams[i]);
        close(saved_[i]);
        close(file_[i]);
    }
}

std::string Capture::out() {
    flushAll();
    return detail::contents(file_[0]);
}

std::string Capture::err() {
    flushAll();
    return detail::contents(file_[1]);
}

ScopedInput::ScopedInput(const std::string& text) : saved_(dup(0)) {
    const int file = detail::passingFile(false); // the text arrives as it is
    // A short write would make a test fail for no reason of its own.
    if (write(file, text.data(), static_cast<unsigned>(text.size())) !=
        static_cast<int>(text.size()))
        std::abort();
    lseek(file, 0, SEEK_SET);
    // What was read ahead belongs to the former input.
    std::fflush(stdin);
    dup2(file, 0);
    close(file);
    std::clearerr(stdin);
}

ScopedInput::~ScopedInput() {
    // Drops what stdio has read ahead, so that the next input starts clean.
    std::fseek(stdin, 0, SEEK_END);
    std::fflush(stdin);
    dup2(saved_, 0);
    close(saved_);
    std::clearerr(stdin);
}

} // namespace moxkit
