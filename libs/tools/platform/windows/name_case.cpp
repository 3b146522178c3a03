// SPDX-License-Identifier: Apache-2.0
// Directories that tell names apart by case are marked one by one; systems that know no such
// mark say so.
#include "tools/platform/host.h"
#include "tools/platform/windows/handle.h"

#include <windows.h>

namespace kaz::host {

std::optional<bool> Directory::ignoresCase() const {
    // The headers lack the one name and give the other a wrong number.
    constexpr ULONG tellsCase = 1;
    constexpr auto caseInfo = static_cast<FILE_INFO_BY_HANDLE_CLASS>(23);
    constexpr DWORD everybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const Handle directory(CreateFileW(open_.path.c_str(), FILE_READ_ATTRIBUTES, everybody, nullptr,
                                       OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    FILE_CASE_SENSITIVE_INFO info{};
    if (!directory.isOpen() ||
        GetFileInformationByHandleEx(directory.get(), caseInfo, &info, sizeof info) == 0)
        return {};
    return (info.Flags & tellsCase) == 0;
}

} // namespace kaz::host
