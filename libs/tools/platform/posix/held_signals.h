// SPDX-License-Identifier: Apache-2.0
/// @file
/// Writes that fail instead of ending the process.
#pragma once

#include "tools/platform/posix/descriptor.h"

#include <csignal>
#include <ctime>
#include <initializer_list>

namespace kaz::host {

/// While it lives a write that would raise one of the signals fails like any other one.
/// They go to the thread that writes, and not to it while they are held back; what came
/// meanwhile is taken away again.
class HeldSignals {
public:
    explicit HeldSignals(std::initializer_list<int> signals) {
        ::sigemptyset(&held_);
        for (const int signal : signals)
            ::sigaddset(&held_, signal);
        ::pthread_sigmask(SIG_BLOCK, &held_, &before_);
        for (const int signal : signals) // somebody else's
            if (::sigismember(&before_, signal) == 1)
                ::sigdelset(&held_, signal);
    }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    ~HeldSignals() {
        const int saved = errno;
        const timespec now = {0, 0};
        while (retry([&] { return ::sigtimedwait(&held_, nullptr, &now); }) > 0) {
        }
        ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        errno = saved;
    }

private:
    sigset_t held_;
    sigset_t before_;
};

} // namespace kaz::host
