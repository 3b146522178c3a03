// SPDX-License-Identifier: Apache-2.0
/// @file
/// An attacker who exchanges names.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
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

/// How often an attack is tried: @p few times among other tests, a thousand times with
/// KIT_SWEEP, and as long as KIT_SECONDS says where that is set.
class Attempts {
public:
    explicit Attempts(int few)
        : most_(std::getenv("KIT_SWEEP") != nullptr ? 1000 : few),
          seconds_(std::getenv("KIT_SECONDS")) {}
    Attempts(const Attempts&) = delete;
    Attempts& operator=(const Attempts&) = delete;
    /// Says how often that was, where only the time was given.
    ~Attempts() {
        if (seconds_ != nullptr)
            std::printf("%d attempts in %s s\n", made_ - 1, seconds_);
    }

    bool next() {
        ++made_;
        if (seconds_ == nullptr)
            return made_ <= most_;
        return std::chrono::steady_clock::now() - start_ <
               std::chrono::seconds(std::atoi(seconds_));
    }
    int made() const { return made_; }

private:
    int most_;
    int made_ = 0;
    const char* seconds_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace kit
