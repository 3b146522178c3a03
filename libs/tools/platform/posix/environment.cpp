// SPDX-License-Identifier: Apache-2.0
// The environment is the C library's own, of this process; its texts are passed on as they are,
// and the directories that are found through it are told in native text. There are none here that
// a host keeps for the data of programs, so the two functions for them answer with nothing.
#include "tools/platform/host.h"
#include "tools/platform/host_environment.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace kaz::host {

const char* environment(const char* name) {
    return std::getenv(name);
}

char** environmentEntries() {
    return environ;
}

int setEnvironment(const char* name, const char* value) {
    return ::setenv(name, value, 1);
}

std::string homeDirectory() {
    // The size that a record needs is known only when it has fit.
    std::vector<char> buffer(1024);
    passwd entry{};
    passwd* found = nullptr;
    while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(2 * buffer.size());
    const bool hasHome = found != nullptr && found->pw_dir != nullptr;
    return hasHome ? nativePath(found->pw_dir) : std::string();
}

std::string roamingDataDirectory() {
    return {};
}

std::string profileDirectory() {
    return {};
}

std::string temporaryDirectory() {
    for (const char* name : {"TMPDIR", "TMP", "TEMP"}) {
        const char* value = environment(name);
        if (value != nullptr && isDirectory(value))
            return nativePath(value);
    }
    return "\\tmp";
}

int processId() {
    return ::getpid();
}

} // namespace kaz::host
