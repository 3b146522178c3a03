// SPDX-License-Identifier: Apache-2.0
// Names come from the system's own records and never from the environment, which anybody can set.
// No question goes to a name server: a tool must not wait for one to write a line of text.
#include "tools/platform/host.h"

#include <array>
#include <cctype>
#include <cerrno>
#include <netdb.h>
#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

namespace kaz::host {

namespace {

struct User {
    std::string name;
    std::string comment;
};

/// The real user in the system's user database.
User realUser() {
    std::vector<char> buffer(1024);
    passwd entry{};
    passwd* found = nullptr;
    // The size that a record needs is known only when it has fit.
    while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(2 * buffer.size());
    User user;
    if (found != nullptr && found->pw_name != nullptr)
        user.name = found->pw_name;
    if (found != nullptr && found->pw_gecos != nullptr)
        user.comment = found->pw_gecos;
    return user;
}

std::string capitalised(std::string text) {
    if (!text.empty())
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text;
}

bool isNameOf(const char* full, const std::string& host) {
    return full != nullptr && std::string_view(full).starts_with(host + '.');
}

/// The list of hosts that the system has itself: the network knows nothing of a question
/// for the next entry.
std::string listedName(const std::string& host) {
    std::string result;
    ::sethostent(0);
    for (const hostent* entry = ::gethostent(); entry != nullptr && result.empty();
         entry = ::gethostent()) {
        if (isNameOf(entry->h_name, host))
            result = entry->h_name;
        for (char** alias = entry->h_aliases; *alias != nullptr && result.empty(); ++alias)
            if (isNameOf(*alias, host))
                result = *alias;
    }
    ::endhostent();
    return result;
}

} // namespace

std::string hostName() {
    utsname system{};
    return ::uname(&system) == 0 ? system.nodename : "";
}

std::string fullHostName() {
    std::string name = hostName();
    if (name.empty() || name.find('.') != std::string::npos)
        return name;
    return listedName(name);
}

std::string machineIdentity() {
    const ReadableFile file("/etc/machine-id");
    std::array<char, 64> buffer;
    std::string text(buffer.data(), file.isOpen() ? file.read(0, buffer.data(), buffer.size()) : 0);
    text.resize(text.find_last_not_of("\r\n") + 1);
    // What the file holds while the system starts for the first time.
    return text != "uninitialized" ? text : "";
}

std::string userName() {
    return realUser().name;
}

std::string userFullName() {
    const User user = realUser();
    std::string full;
    for (const char c : user.comment.substr(0, user.comment.find(','))) {
        if (c == '&')
            full += capitalised(user.name);
        else
            full += c;
    }
    return full;
}

std::string systemName() {
    utsname system{};
    if (::uname(&system) != 0)
        return {};
    return std::string(system.sysname) + ' ' + system.release + ' ' + system.machine;
}

} // namespace kaz::host
