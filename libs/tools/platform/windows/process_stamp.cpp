// SPDX-License-Identifier: Apache-2.0
// A process is told from others of the same number by the machine and by the time of its start,
// in the system's own ticks. One that others still hold open after its end counts as ended: it
// has a status.
#include "tools/platform/host_process_stamp.h"

#include "tools/platform/windows/handle.h"

#include <array>
#include <string>
#include <windows.h>

namespace kaz::host {

std::string processPlace() {
    std::array<char, MAX_COMPUTERNAME_LENGTH + 1> name;
    DWORD size = name.size();
    if (GetComputerNameA(name.data(), &size) == 0)
        return {};
    std::string result(name.data(), size);
    for (char& c : result)
        c = c == ' ' ? '_' : c;
    return result;
}

std::string processStart(int number) {
    const Handle process(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(number)));
    // There is such a process, but it belongs to somebody else.
    if (!process.isOpen() && GetLastError() == ERROR_ACCESS_DENIED)
        return "?";
    FILETIME start, end, kernel, user;
    // The status of a process that runs is 259; one that ended with just that counts as running.
    DWORD status = 0;
    if (!process.isOpen() || GetExitCodeProcess(process.get(), &status) == 0 ||
        status != STILL_ACTIVE || GetProcessTimes(process.get(), &start, &end, &kernel, &user) == 0)
        return {};
    return std::to_string(start.dwHighDateTime) + '.' + std::to_string(start.dwLowDateTime);
}

} // namespace kaz::host
