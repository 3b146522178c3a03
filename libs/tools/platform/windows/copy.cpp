#include "tools/platform/windows/copy.h"

#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/file_status.h"
#include "tools/platform/windows/handle.h"

#include <cerrno>

namespace kaz::host {

namespace {

int checkTarget(const std::wstring& target, const FileStatus& source, bool mayReplace) {
    FileStatus info;
    if (statusOfLiteral(target, false, info) != 0)
        return errno == ENOENT ? 0 : -1;
    if (!mayReplace)
        return failWith(EEXIST);
    if (info.kind == Kind::directory)
        return failWith(EISDIR);
    const bool same = info.device == source.device && info.serial == source.serial;
    return same ? failWith(EINVAL) : 0;
}

/// The file beside the target that becomes the target. Removed again unless it
/// got there.
class Beside {
public:
    explicit Beside(const std::wstring& target)
        : stem_(target.substr(0, target.rfind(L'\\') + 1) + L".mox-" +
                std::to_wstring(GetCurrentProcessId()) + L"-") {}
    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;
    ~Beside() {
        const int saved = errno;
        if (exists_ && SetFileAttributesW(name_.c_str(), FILE_ATTRIBUTE_NORMAL) != 0)
            DeleteFileW(name_.c_str());
        errno = saved;
    }

    int fill(const std::wstring& source) {
        static constinit unsigned counter = 0;
        do {
            name_ = stem_ + std::to_wstring(counter++) + L".part";
            exists_ = CopyFileW(source.c_str(), name_.c_str(), TRUE) != 0;
        } while (!exists_ && GetLastError() == ERROR_FILE_EXISTS);
        return succeededOrFail(exists_);
    }

    /// The system's copy has the time of its source.
    int dateNow() const {
        const Handle file(CreateFileW(name_.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ,
                                      nullptr, OPEN_EXISTING, 0, nullptr));
        FILETIME now;
        GetSystemTimeAsFileTime(&now);
        return succeededOrFail(file.isOpen() && SetFileTime(file.get(), nullptr, nullptr, &now));
    }

    int become(const std::wstring& target, bool mayReplace) {
        const DWORD flags = mayReplace ? MOVEFILE_REPLACE_EXISTING : 0;
        if (MoveFileExW(name_.c_str(), target.c_str(), flags) == 0)
            return failWithLastError();
        exists_ = false;
        return 0;
    }

private:
    std::wstring stem_;
    std::wstring name_;
    bool exists_ = false;
};

} // namespace

int copyLiteral(const std::wstring& source, const std::wstring& target, bool mayReplace) {
    FileStatus info;
    if (statusOfRegular(source, info) != 0 || checkTarget(target, info, mayReplace) != 0)
        return -1;
    Beside beside(target);
    if (beside.fill(source) != 0 || beside.dateNow() != 0)
        return -1;
    return beside.become(target, mayReplace);
}

} // namespace kaz::host
