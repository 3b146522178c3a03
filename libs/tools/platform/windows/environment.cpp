// SPDX-License-Identifier: Apache-2.0
// The environment is the runtime library's own. Directories for the data of programs are asked of
// the registry, where users may have moved them.
#include "tools/platform/host.h"
#include "tools/platform/host_environment.h"
#include "tools/platform/windows/errors.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <process.h>
#include <windows.h>

namespace kaz::host {

namespace {

constexpr char shellFolders[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

/// A registry key that is open for reading.
class Key {
public:
    Key(HKEY parent, const char* name) {
        if (RegOpenKeyExA(parent, name, 0, KEY_QUERY_VALUE, &key_) != ERROR_SUCCESS)
            key_ = nullptr;
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (key_ != nullptr)
            RegCloseKey(key_);
    }

    /// A text value that fits a path; empty when there is none.
    std::string text(const char* name) const {
        std::array<char, MAX_PATH + 1> buffer{};
        DWORD size = buffer.size();
        DWORD type = 0;
        if (key_ == nullptr ||
            RegQueryValueExA(key_, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()),
                             &size) != ERROR_SUCCESS ||
            (type != REG_SZ && type != REG_EXPAND_SZ))
            return {};
        // A stored text need not be terminated.
        return {buffer.data(), strnlen(buffer.data(), size)};
    }

private:
    HKEY key_ = nullptr;
};

bool isVariableName(const char* name) {
    return *name != '\0' && std::strchr(name, '=') == nullptr;
}

} // namespace

const char* environment(const char* name) {
    return std::getenv(name);
}

char** environmentEntries() {
    return _environ;
}

/// An empty value removes the variable: this runtime library knows none that is set and empty.
int setEnvironment(const char* name, const char* value) {
    if (!isVariableName(name))
        return failWith(EINVAL);
    return ::_putenv((std::string(name) + '=' + value).c_str());
}

std::string homeDirectory() {
    return {};
}

std::string roamingDataDirectory() {
    return Key(HKEY_CURRENT_USER, shellFolders).text("AppData");
}

std::string profileDirectory() {
    const char* profile = environment("USERPROFILE");
    return profile != nullptr ? profile : "";
}

std::string temporaryDirectory() {
    for (const char* name : {"TMPDIR", "TMP", "TEMP"}) {
        const char* value = environment(name);
        if (value != nullptr && isDirectory(value))
            return nativePath(value);
    }
    std::array<char, MAX_PATH + 1> buffer{};
    // It looks at TMP and TEMP as well, though not whether they are there, and falls back to
    // directories of the system.
    GetTempPathA(buffer.size(), buffer.data());
    return buffer.data();
}

int processId() {
    return ::_getpid();
}

} // namespace kaz::host
