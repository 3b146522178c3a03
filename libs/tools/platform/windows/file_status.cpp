// SPDX-License-Identifier: Apache-2.0
// A file is opened for its attributes alone, which nobody's sharing mode forbids, and asked
// itself: a listing's answer may be out of date. Links are what the system calls reparse points;
// whether one is followed is decided at the opening. There are no permission bits, so they are
// made up as the runtime library does.
#include "tools/platform/windows/file_status.h"

#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/handle.h"
#include "tools/platform/windows/text.h"

#include <array>
#include <cerrno>
#include <cwchar>

namespace kaz::host {

namespace {

/// Two 32-bit halves.
std::uint64_t joined(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

std::int64_t unixTime(const FILETIME& time) {
    constexpr std::int64_t ticksPerSecond = 10'000'000;
    constexpr std::int64_t from1601To1970 = 11'644'473'600; // seconds
    const auto ticks = static_cast<std::int64_t>(joined(time.dwHighDateTime, time.dwLowDateTime));
    return ticks / ticksPerSecond - from1601To1970;
}

bool isProgram(const std::wstring& path) {
    const std::size_t dot = path.rfind(L'.');
    if (dot == std::wstring::npos)
        return false;
    for (const wchar_t* extension : {L".exe", L".com", L".bat", L".cmd"})
        if (::_wcsicmp(path.c_str() + dot, extension) == 0)
            return true;
    return false;
}

/// As the runtime library derives them: everybody may read, writing hangs on
/// the attribute, programs are known by their name.
unsigned modeOf(DWORD attributes, const std::wstring& path) {
    const unsigned write = (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? 0 : 0222;
    const bool search = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 || isProgram(path);
    return 0444 | write | (search ? 0111 : 0);
}

} // namespace

Kind kindOfAttributes(unsigned long attributes) {
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
        return Kind::link;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Kind::directory : Kind::file;
}

int statusOfLiteral(const std::wstring& path, bool followLink, FileStatus& result) {
    result = FileStatus();
    const DWORD flags =
        FILE_FLAG_BACKUP_SEMANTICS | (followLink ? 0 : FILE_FLAG_OPEN_REPARSE_POINT);
    const Handle file(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, flags, nullptr));
    if (!file.isOpen())
        return failWithLastError();
    // A device has none of what follows, and some block the one who asks.
    if (GetFileType(file.get()) != FILE_TYPE_DISK) {
        result.kind = Kind::special;
        return 0;
    }
    BY_HANDLE_FILE_INFORMATION info;
    if (GetFileInformationByHandle(file.get(), &info) == 0)
        return failWithLastError();
    // What a link leads to may have the bit as well, where the reparse point is none that leads
    // elsewhere, such as that of a file kept in a cloud: it is a file.
    result.kind =
        kindOfAttributes(followLink ? info.dwFileAttributes & ~DWORD{FILE_ATTRIBUTE_REPARSE_POINT}
                                    : info.dwFileAttributes);
    result.mode = modeOf(info.dwFileAttributes, path);
    result.size = joined(info.nFileSizeHigh, info.nFileSizeLow);
    result.modified = unixTime(info.ftLastWriteTime);
    result.device = info.dwVolumeSerialNumber;
    result.serial = joined(info.nFileIndexHigh, info.nFileIndexLow);
    return 0;
}

int statusOfRegular(const std::wstring& path, FileStatus& result) {
    if (statusOfLiteral(path, true, result) != 0)
        return -1;
    if (result.kind == Kind::file)
        return 0;
    return failWith(result.kind == Kind::directory ? EISDIR : EINVAL);
}

int status(const char* path, FileStatus& result) {
    result = FileStatus();
    const std::wstring literal = literalPath(path);
    return literal.empty() ? -1 : statusOfLiteral(literal, true, result);
}

bool isDirectory(const char* path) {
    FileStatus info;
    return status(path, info) == 0 && info.kind == Kind::directory;
}

bool isRealDirectory(const char* path) {
    // A trailing separator would make the system follow a link at the end.
    std::wstring literal = literalPath(path);
    while (!literal.empty() && literal.back() == L'\\' && !literal.ends_with(L":\\"))
        literal.pop_back();
    FileStatus info;
    return !literal.empty() && statusOfLiteral(literal, false, info) == 0 &&
           info.kind == Kind::directory;
}

} // namespace kaz::host
