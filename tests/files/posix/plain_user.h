// SPDX-License-Identifier: Apache-2.0
/// @file
/// Tests of permissions.
#pragma once

#include <cstdlib>
#include <unistd.h>

namespace tree {

/// Acts as a user without privileges where the test runs as root, so that
/// permissions mean something.
class PlainUser {
public:
    PlainUser() : wasRoot_(::geteuid() == 0) { change(65534); }
    ~PlainUser() { change(0); }
    PlainUser(const PlainUser&) = delete;
    PlainUser& operator=(const PlainUser&) = delete;

private:
    void change(uid_t user) {
        if (wasRoot_ && ::seteuid(user) != 0)
            std::abort();
    }
    bool wasRoot_;
};

} // namespace tree
