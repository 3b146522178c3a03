#include "tools/platform/host.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace kaz::host {

namespace {

/// One field of the user's entry in the password database.
std::string userEntry(char* passwd::*field) {
    std::vector<char> buffer(1024);
    passwd entry{};
    passwd* found = nullptr;
    while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(2 * buffer.size());
    return found != nullptr && found->*field != nullptr ? found->*field : "";
}

} // namespace

const char* environment(const char* name) {
    return std::getenv(name);
}

int setEnvironment(const char* name, const char* value) {
    return ::setenv(name, value, 1);
}

int removeEnvironment(const char* name) {
    return ::unsetenv(name);
}

std::string homeDirectory() {
    return nativePath(userEntry(&passwd::pw_dir).c_str());
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

std::string userName() {
    return userEntry(&passwd::pw_name);
}

std::string hostName() {
    std::array<char, HOST_NAME_MAX + 1> buffer{};
    return ::gethostname(buffer.data(), buffer.size() - 1) == 0 ? buffer.data() : "";
}

} // namespace kaz::host
