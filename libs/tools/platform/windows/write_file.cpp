// SPDX-License-Identifier: Apache-2.0
// The new contents are written beside the target and take its name in one step: the target is the
// old file or the new one, as a whole. Links are followed first, or the link itself would be
// replaced.
#include "tools/platform/host.h"
#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/file_status.h"
#include "tools/platform/windows/handle.h"
#include "tools/platform/windows/text.h"

#include <algorithm>
#include <cerrno>

namespace kaz::host {

namespace {

/// Closes, and so tells what was still to be written.
int writeAll(Handle file, const void* data, std::size_t size) {
    const char* from = static_cast<const char*>(data);
    if (!file.isOpen())
        return failWithLastError();
    while (size > 0) {
        DWORD done = 0;
        const DWORD piece = static_cast<DWORD>(std::min<std::size_t>(size, 1U << 30));
        if (WriteFile(file.get(), from, piece, &done, nullptr) == 0)
            return failWithLastError();
        if (done == 0)
            return failWith(ENOSPC);
        from += done;
        size -= done;
    }
    return 0;
}

/// What the links at the end of the path lead to.
std::wstring behindLinks(const std::wstring& path) {
    FileStatus info;
    if (statusOfLiteral(path, false, info) != 0 || info.kind != Kind::link)
        return path;
    const Handle file(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    std::wstring target(32768, L'\0'); // the longest path of this system
    const DWORD length = file.isOpen()
                             ? GetFinalPathNameByHandleW(file.get(), target.data(),
                                                         static_cast<DWORD>(target.size()), 0)
                             : 0;
    target.resize(length < target.size() ? length : 0);
    return target.empty() ? path : target;
}

/// The file beside the target that becomes the target. Removed again unless it got there.
class Beside {
public:
    explicit Beside(const std::wstring& target) {
        constexpr std::size_t mostOfName = 100;
        constexpr int attempts = 1000;
        const std::wstring stem = target.substr(0, target.rfind(L'\\') + 1 + mostOfName);
        for (int attempt = 0; attempt < attempts; ++attempt) {
            name_ = stem + L".new" + std::to_wstring(attempt);
            // Nobody else may open it before it is complete. What a killed process leaves keeps its
            // name for good.
            file_ = Handle(CreateFileW(name_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
            // The assignment has closed nothing that would change the last error. Any other failure
            // holds for all names.
            if (file_.isOpen() || GetLastError() != ERROR_FILE_EXISTS)
                break;
        }
        exists_ = file_.isOpen();
    }
    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;
    ~Beside() {
        const int saved = errno;
        if (exists_)
            DeleteFileW(name_.c_str());
        errno = saved;
    }

    int fill(const void* data, std::size_t size) { return writeAll(std::move(file_), data, size); }

    int become(const std::wstring& target) {
        if (MoveFileExW(name_.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) == 0)
            return failWithLastError();
        exists_ = false;
        return 0;
    }

private:
    std::wstring name_;
    Handle file_;
    bool exists_ = false;
};

int writeInto(const std::wstring& path, const void* data, std::size_t size) {
    return writeAll(
        Handle(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, 0, nullptr)),
        data, size);
}

} // namespace

int writeFile(const char* path, const void* data, std::size_t size) {
    std::wstring target = literalPath(path);
    if (target.empty())
        return -1;
    target = behindLinks(target);
    FileStatus info;
    if (statusOfLiteral(target, true, info) == 0) {
        if (info.kind == Kind::directory)
            return failWith(EISDIR);
        // A pipe or a device has no contents that could be replaced as a whole.
        if (info.kind != Kind::file)
            return writeInto(target, data, size);
    }
    Beside beside(target);
    return beside.fill(data, size) == 0 ? beside.become(target) : -1;
}

} // namespace kaz::host
