// SPDX-License-Identifier: Apache-2.0
// The system copies a file with everything that belongs to it, under a name of its own beside the
// target; the last step gives it the target's name. So the target is absent, the old file or the
// whole new one. A copy counts as written now, whatever the system makes of its date.
#include "tools/platform/windows/copy.h"

#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/file_status.h"
#include "tools/platform/windows/handle.h"

#include <cerrno>

namespace kaz::host {

namespace {

/// Before the work: the system would refuse as well, but only after it.
int checkTarget(const std::wstring& target, const FileStatus& source, bool mayReplace) {
    FileStatus info;
    if (statusOfLiteral(target, false, info) != 0)
        return errno == ENOENT ? 0 : -1;
    if (!mayReplace)
        return failWith(EEXIST);
    if (info.kind == Kind::directory)
        return failWith(EISDIR);
    return sameFile(info, source) ? failWith(EINVAL) : 0;
}

/// Called between portions of a copy.
DWORD CALLBACK askWhetherToGoOn(LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, DWORD,
                                DWORD, HANDLE, HANDLE, void* rules) {
    const auto goesOn = static_cast<const CopyRules*>(rules)->goesOn;
    return goesOn == nullptr || goesOn() ? PROGRESS_CONTINUE : PROGRESS_CANCEL;
}

/// A new file with the contents of @p source.
/// A copy that is cancelled the system removes again; one that a killed process leaves stays.
bool copyNew(const std::wstring& source, const std::wstring& target, const CopyRules& rules) {
    CopyRules own = rules;
    return CopyFileExW(source.c_str(), target.c_str(), askWhetherToGoOn, &own, nullptr,
                       COPY_FILE_FAIL_IF_EXISTS) != 0;
}

/// The system's copy has the time of its source.
int dateNow(const std::wstring& name) {
    const Handle file(CreateFileW(name.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, 0, nullptr));
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return succeededOrFail(file.isOpen() && SetFileTime(file.get(), nullptr, nullptr, &now));
}

/// A copy of a file that nobody may write to is not to be deleted either, before that is undone.
void removeQuietly(const std::wstring& name) {
    const int saved = errno;
    if (SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL) != 0)
        DeleteFileW(name.c_str());
    errno = saved;
}

int copyInPlace(const std::wstring& source, const std::wstring& target, const CopyRules& rules) {
    if (!copyNew(source, target, rules))
        return failWithLastError();
    if (dateNow(target) == 0)
        return 0;
    removeQuietly(target);
    return -1;
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
        if (exists_)
            removeQuietly(name_);
    }

    int fill(const std::wstring& source, const CopyRules& rules) {
        static constinit unsigned counter = 0;
        do {
            name_ = stem_ + std::to_wstring(counter++) + L".part";
            // What a killed process has left has its number in the name and is passed over, should
            // the number come again.
            exists_ = copyNew(source, name_, rules);
        } while (!exists_ && GetLastError() == ERROR_FILE_EXISTS);
        return succeededOrFail(exists_);
    }

    int dateNow() const { return host::dateNow(name_); }

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

int copyLiteral(const std::wstring& source, const std::wstring& target, const CopyRules& rules) {
    FileStatus info;
    if (statusOfRegular(source, info) != 0 || checkTarget(target, info, rules.mayReplace) != 0)
        return -1;
    if (rules.inPlace)
        return copyInPlace(source, target, rules);
    Beside beside(target);
    if (beside.fill(source, rules) != 0 || beside.dateNow() != 0)
        return -1;
    return beside.become(target, rules.mayReplace);
}

} // namespace kaz::host
