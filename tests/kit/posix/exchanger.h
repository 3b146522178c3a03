// SPDX-License-Identifier: Apache-2.0
/// @file
/// An attacker who exchanges names.
#pragma once

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace kit {

/// A process that exchanges two names again and again, as long as the object lives.
class Exchanger {
public:
    Exchanger(const std::string& a, const std::string& b) : child_(::fork()) {
        if (child_ == 0)
            for (;;)
                ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE);
    }
    ~Exchanger() {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
    Exchanger(const Exchanger&) = delete;
    Exchanger& operator=(const Exchanger&) = delete;

private:
    pid_t child_;
};

} // namespace kit
