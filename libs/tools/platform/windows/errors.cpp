// SPDX-License-Identifier: Apache-2.0
// The system's numbers become those that callers know from elsewhere. What is missing in the
// table becomes EINVAL, which is to say: something that nobody here has foreseen.
#include "tools/platform/windows/errors.h"

#include <array>
#include <cerrno>
#include <windows.h>

namespace kaz::host {

namespace {

struct Row {
    DWORD code;
    int number;
};

constexpr std::array rows{
    Row{ERROR_FILE_NOT_FOUND, ENOENT},
    Row{ERROR_PATH_NOT_FOUND, ENOENT},
    Row{ERROR_INVALID_NAME, ENOENT},
    Row{ERROR_BAD_PATHNAME, ENOENT},
    Row{ERROR_BAD_NETPATH, ENOENT},
    Row{ERROR_BAD_NET_NAME, ENOENT},
    Row{ERROR_INVALID_DRIVE, ENOENT},
    Row{ERROR_DIRECTORY, ENOTDIR},
    Row{ERROR_ACCESS_DENIED, EACCES},
    Row{ERROR_SHARING_VIOLATION, EACCES},
    Row{ERROR_LOCK_VIOLATION, EACCES},
    Row{ERROR_WRITE_PROTECT, EROFS},
    Row{ERROR_ALREADY_EXISTS, EEXIST},
    Row{ERROR_FILE_EXISTS, EEXIST},
    Row{ERROR_DIR_NOT_EMPTY, ENOTEMPTY},
    Row{ERROR_FILENAME_EXCED_RANGE, ENAMETOOLONG},
    Row{ERROR_BUFFER_OVERFLOW, ENAMETOOLONG},
    Row{ERROR_NOT_SAME_DEVICE, EXDEV},
    Row{ERROR_DISK_FULL, ENOSPC},
    Row{ERROR_HANDLE_DISK_FULL, ENOSPC},
    Row{ERROR_TOO_MANY_OPEN_FILES, EMFILE},
    Row{ERROR_INVALID_HANDLE, EBADF},
    Row{ERROR_NOT_ENOUGH_MEMORY, ENOMEM},
    Row{ERROR_OUTOFMEMORY, ENOMEM},
    Row{ERROR_BROKEN_PIPE, EPIPE},
    Row{ERROR_REQUEST_ABORTED, ECANCELED},
    Row{ERROR_BAD_EXE_FORMAT, ENOEXEC},
};

} // namespace

int failWith(int number) {
    errno = number;
    return -1;
}

int errnoOf(unsigned long code) {
    for (const Row& row : rows)
        if (row.code == code)
            return row.number;
    return EINVAL;
}

int failWithLastError() {
    return failWith(errnoOf(GetLastError()));
}

int succeededOrFail(int success) {
    return success != 0 ? 0 : failWithLastError();
}

} // namespace kaz::host
