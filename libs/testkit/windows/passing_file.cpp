// SPDX-License-Identifier: Apache-2.0
#include "testkit/detail/passing_file.h"

#include "testkit/windows/text.h"

#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

int moxkit::detail::passingFile(bool text) {
    char directory[MAX_PATH + 1];
    char name[MAX_PATH + 1];
    if (GetTempPathA(sizeof directory, directory) == 0 ||
        GetTempFileNameA(directory, "kit", 0, name) == 0)
        std::abort();
    // Temporary: the runtime deletes it with the last descriptor, however the test ends.
    const int mode = _O_RDWR | _O_TEMPORARY | (text ? _O_TEXT : _O_BINARY);
    const int file = ::_open(name, mode, _S_IREAD | _S_IWRITE);
    if (file < 0)
        std::abort();
    return file;
}

/// The position is shared with the stream and comes back to where it was.
std::string moxkit::detail::contents(int file) {
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(file));
    const __int64 end = ::_lseeki64(file, 0, SEEK_CUR);
    ::_lseeki64(file, 0, SEEK_SET);
    std::string text;
    char buffer[4096];
    for (DWORD n = 0; ReadFile(handle, buffer, sizeof buffer, &n, nullptr) != 0 && n > 0;)
        text.append(buffer, n);
    ::_lseeki64(file, end, SEEK_SET);
    return withoutReturns(text);
}
