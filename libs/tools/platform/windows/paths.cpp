// SPDX-License-Identifier: Apache-2.0
// Every path can be meant here, and only "/" is exchanged for the separator. Absolute paths are
// the system's own work, since it alone knows the current directory of each drive; they have the
// length that the plain functions of the system take.
#include "tools/platform/host.h"
#include "tools/platform/windows/errors.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <direct.h>
#include <windows.h>

namespace kaz::host {

bool canName(const char*) {
    return true;
}

std::string hostPath(const char* native) {
    return nativePath(native);
}

std::string nativePath(const char* hostSpelling) {
    std::string result = hostSpelling;
    std::replace(result.begin(), result.end(), '/', '\\');
    return result;
}

std::size_t pathLimit() {
    return MAX_PATH;
}

char searchPathSeparator() {
    return ';';
}

const std::string& absolutePath(const char* path) {
    // Never destroyed: static objects of a tool may ask to the very end.
    static std::string& result = *new std::string;
    result.clear();
    if (*path == '\0') {
        errno = ENOENT;
        return result;
    }
    std::array<char, MAX_PATH> buffer;
    // A length that is not below the size is the one that would be needed.
    const DWORD length = GetFullPathNameA(path, buffer.size(), buffer.data(), nullptr);
    if (length > 0 && length < buffer.size())
        result.assign(buffer.data(), length);
    else
        errno = length > 0 ? ENAMETOOLONG : errnoOf(GetLastError());
    return result;
}

std::string currentDirectory() {
    std::array<char, MAX_PATH> buffer;
    return ::_getcwd(buffer.data(), buffer.size()) != nullptr ? buffer.data() : "";
}

std::string moduleFileName() {
    std::array<char, MAX_PATH + 1> buffer;
    // Null where the library is linked into the program.
    const HMODULE library = GetModuleHandleA("moxtools.dll");
    if (library == nullptr)
        return {};
    const DWORD length = GetModuleFileNameA(library, buffer.data(), buffer.size());
    // A name that was cut fills the buffer.
    return length < buffer.size() ? std::string(buffer.data(), length) : std::string();
}

} // namespace kaz::host
