#include "kit/capture.h"

#include "kit/windows/text.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <iostream>
#include <sys/stat.h>
#include <windows.h>

namespace kit {

namespace {

constexpr int streams[2] = {1, 2};

/// An open file that disappears with its last descriptor, in text or binary mode.
int passingFile(int mode) {
    char directory[MAX_PATH + 1];
    char name[MAX_PATH + 1];
    if (GetTempPathA(sizeof directory, directory) == 0 ||
        GetTempFileNameA(directory, "kit", 0, name) == 0)
        std::abort();
    const int file = ::_open(name, _O_RDWR | _O_TEMPORARY | mode, _S_IREAD | _S_IWRITE);
    if (file < 0)
        std::abort();
    return file;
}

void flushAll() {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
}

/// The position is shared with the stream and comes back to where it was.
std::string contents(int file) {
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(file));
    const __int64 end = ::_lseeki64(file, 0, SEEK_CUR);
    ::_lseeki64(file, 0, SEEK_SET);
    std::string text;
    char buffer[4096];
    for (DWORD n = 0; ReadFile(handle, buffer, sizeof buffer, &n, nullptr) != 0 && n > 0;)
        text.append(buffer, n);
    ::_lseeki64(file, end, SEEK_SET);
    return withoutReturns(text);
}

} // namespace

Capture::Capture() {
    flushAll();
    for (int i = 0; i < 2; ++i) {
        saved_[i] = ::_dup(streams[i]);
        file_[i] = passingFile(_O_TEXT); // like the stream that it stands for
        ::_dup2(file_[i], streams[i]);
    }
}

Capture::~Capture() {
    flushAll();
    for (int i = 0; i < 2; ++i) {
        ::_dup2(saved_[i], streams[i]);
        ::_close(saved_[i]);
        ::_close(file_[i]);
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

ScopedInput::ScopedInput(const std::string& text) : saved_(::_dup(0)) {
    const int file = passingFile(_O_BINARY); // the text arrives as it is
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(file));
    DWORD written = 0;
    WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    if (written != text.size())
        std::abort();
    ::_lseeki64(file, 0, SEEK_SET);
    std::fflush(stdin);
    ::_dup2(file, 0);
    ::_close(file);
    std::clearerr(stdin);
}

ScopedInput::~ScopedInput() {
    // Drops what stdio has read ahead, so that the next input starts clean.
    std::fseek(stdin, 0, SEEK_END);
    std::fflush(stdin);
    ::_dup2(saved_, 0);
    ::_close(saved_);
    std::clearerr(stdin);
}

} // namespace kit
