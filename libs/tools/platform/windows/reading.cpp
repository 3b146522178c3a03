// SPDX-License-Identifier: Apache-2.0
// The kind is looked at before the opening, since some names hang when they are opened, and again
// after it, since a name can be exchanged in between.
#include "tools/platform/host.h"
#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/file_status.h"
#include "tools/platform/windows/text.h"

#include <io.h>
#include <windows.h>

namespace kaz::host {

namespace {

/// The name may have come to mean a device or a pipe since it was looked at.
bool isOnDisk(std::FILE* stream) {
    const auto file = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
    return GetFileType(file) == FILE_TYPE_DISK;
}

} // namespace

std::FILE* openForReading(const char* path, FileStatus& info) {
    info = FileStatus();
    const std::wstring literal = literalPath(path);
    if (literal.empty() || statusOfRegular(literal, info) != 0)
        return nullptr;
    std::FILE* stream = std::fopen(path, "r");
    if (stream == nullptr || isOnDisk(stream))
        return stream;
    std::fclose(stream);
    failWith(EINVAL);
    return nullptr;
}

bool canOpenForReading(const char* path) {
    std::FILE* stream = std::fopen(path, "r");
    return stream != nullptr && std::fclose(stream) == 0;
}

} // namespace kaz::host
