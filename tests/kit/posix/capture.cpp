#include "kit/capture.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <unistd.h>

namespace kit {

namespace {

constexpr int streams[2] = {STDOUT_FILENO, STDERR_FILENO};

/// An open file without a name.
int unnamedFile() {
    char name[] = "/tmp/moxkitXXXXXX";
    const int fd = mkstemp(name);
    if (fd < 0)
        std::abort();
    unlink(name);
    return fd;
}

void flushAll() {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
}

std::string contents(int fd) {
    std::string text;
    char buffer[4096];
    off_t at = 0;
    for (ssize_t n; (n = pread(fd, buffer, sizeof buffer, at)) > 0; at += n)
        text.append(buffer, static_cast<std::size_t>(n));
    return text;
}

} // namespace

Capture::Capture() {
    flushAll();
    for (int i = 0; i < 2; ++i) {
        saved_[i] = dup(streams[i]);
        file_[i] = unnamedFile();
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
    return contents(file_[0]);
}

std::string Capture::err() {
    flushAll();
    return contents(file_[1]);
}

ScopedInput::ScopedInput(const std::string& text) : saved_(dup(STDIN_FILENO)) {
    const int fd = unnamedFile();
    if (write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        std::abort();
    lseek(fd, 0, SEEK_SET);
    std::fflush(stdin);
    dup2(fd, STDIN_FILENO);
    close(fd);
    std::clearerr(stdin);
}

ScopedInput::~ScopedInput() {
    // Drops what stdio has read ahead, so that the next input starts clean.
    std::fseek(stdin, 0, SEEK_END);
    std::fflush(stdin);
    dup2(saved_, STDIN_FILENO);
    close(saved_);
    std::clearerr(stdin);
}

} // namespace kit
