// SPDX-License-Identifier: Apache-2.0
// Each read names its offset and moves no position that anybody relies on. The end of the file is
// a failure to the system, and none to the caller.
#include "tools/platform/host.h"
#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/file_status.h"
#include "tools/platform/windows/handle.h"
#include "tools/platform/windows/text.h"

#include <algorithm>

namespace kaz::host {

namespace {

HANDLE asHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

/// Whoever likes may go on writing, renaming and removing the file, as elsewhere.
std::intptr_t openFor(const std::wstring& path) {
    FileStatus info;
    if (path.empty() || statusOfRegular(path, info) != 0)
        return -1;
    Handle file(CreateFileW(path.c_str(), GENERIC_READ,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, 0, nullptr));
    return file.isOpen() ? reinterpret_cast<std::intptr_t>(file.release()) : failWithLastError();
}

} // namespace

ReadableFile::ReadableFile(const char* path) : handle_(openFor(literalPath(path))) {}

ReadableFile::~ReadableFile() {
    Handle closing(asHandle(handle_));
}

std::size_t ReadableFile::read(std::uint64_t offset, void* to, std::size_t size) const {
    std::size_t done = 0;
    while (done < size) {
        const std::uint64_t place = offset + done;
        OVERLAPPED at = {};
        at.Offset = static_cast<DWORD>(place);
        at.OffsetHigh = static_cast<DWORD>(place >> 32);
        const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(size - done, MAXDWORD));
        DWORD count = 0;
        if (ReadFile(asHandle(handle_), static_cast<char*>(to) + done, wanted, &count, &at) == 0) {
            if (GetLastError() != ERROR_HANDLE_EOF)
                failWithLastError();
            break;
        }
        if (count == 0)
            break;
        done += count;
    }
    return done;
}

} // namespace kaz::host
