// SPDX-License-Identifier: Apache-2.0
// Every answer has a second best, because tools print them and want no error: the short name for
// the full one, the login name for the person's. The host's identity is a name-based identifier
// made from the system's own, which is not to be shown to others as it is; without one the name
// of the host serves, which is as good as unique on one network.
#include "tools/services/hostinfo.h"

#include "tools/files/detail/text.h"
#include "tools/platform/host.h"
#include "tools/services/KazGuid.h"

#include <string>

namespace host = kaz::host;
using kaz::detail::toText;

namespace {

std::string shortName() {
    const std::string name = host::hostName();
    return name.substr(0, name.find('.'));
}

/// For accounts that the system's data base does not know, as in some containers.
std::string fromEnvironment() {
    for (const char* variable : {"LOGNAME", "USER"}) {
        const char* name = host::environment(variable);
        if (name != nullptr && *name != '\0')
            return name;
    }
    return {};
}

std::string loginName() {
    const std::string name = host::userName();
    return !name.empty() ? name : fromEnvironment();
}

} // namespace

KazString kazHostName() {
    return toText(shortName());
}

KazString kazFullHostName() {
    const std::string full = host::fullHostName();
    return toText(!full.empty() ? full : shortName());
}

KazString kazHostId() {
    KazGuid space;
    // A name space of this library's own; another one would change the identity of every host.
    KazGuid::parse("5d0c9b5e-3c3f-5a0b-9d52-1f6a2f0b7c41", space);
    const std::string identity = host::machineIdentity();
    return KazGuid::fromName(space, (!identity.empty() ? identity : shortName()).c_str()).getText();
}

KazString kazUserName() {
    return toText(loginName());
}

KazString kazUserFullName() {
    const std::string full = host::userFullName();
    return toText(!full.empty() ? full : loginName());
}

KazString kazSystemName() {
    return toText(host::systemName());
}
