// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/host.h"
#include "tools/platform/host_lines.h"
#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/handle.h"
#include "tools/platform/windows/text.h"

#include <cerrno>
#include <charconv>
#include <cstring>

namespace kaz::host {

namespace {

HANDLE asHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

} // namespace

LineWriter::LineWriter(const char* path, bool appends) {
    // The opening would fail with "access denied" and not say why.
    if (isDirectory(path)) {
        failWith(EISDIR);
        return;
    }
    const std::wstring name = literalPath(path);
    if (name.empty())
        return;
    // With this right alone each write goes behind what is there.
    Handle file(CreateFileW(name.c_str(), appends ? FILE_APPEND_DATA : GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            appends ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    handle_ = file.isOpen() ? reinterpret_cast<std::intptr_t>(file.release()) : failWithLastError();
}

LineWriter LineWriter::handedOn(const char* number) {
    LineWriter result;
    const char* const end = number + std::strlen(number);
    std::intptr_t value = -1;
    const auto [rest, error] = std::from_chars(number, end, value);
    // Anybody can set the variable that carries the number: it is believed only when a pipe is
    // behind it. From here on no child inherits it.
    if (error == std::errc() && rest == end && value > 2 &&
        GetFileType(asHandle(value)) == FILE_TYPE_PIPE &&
        SetHandleInformation(asHandle(value), HANDLE_FLAG_INHERIT, 0) != 0)
        result.handle_ = value;
    return result;
}

LineWriter::~LineWriter() {
    Handle closing(asHandle(handle_));
}

int LineWriter::write(std::string_view line) const {
    while (!line.empty()) {
        DWORD done = 0;
        if (WriteFile(asHandle(handle_), line.data(), static_cast<DWORD>(line.size()), &done,
                      nullptr) == 0)
            return failWithLastError();
        line.remove_prefix(done);
    }
    return 0;
}

} // namespace kaz::host
