// SPDX-License-Identifier: Apache-2.0
/// @file
/// Commands that are run without the super user's rights.
#pragma once

#include <string>
#include <unistd.h>
#include <vector>

namespace moxcopy_test {

/// Nothing is closed to the super user.
inline std::vector<std::string> asPlainUser(std::vector<std::string> command) {
    if (::geteuid() == 0)
        command.insert(command.begin(), {"/usr/bin/setpriv", "--reuid=65534", "--clear-groups"});
    return command;
}

} // namespace moxcopy_test
