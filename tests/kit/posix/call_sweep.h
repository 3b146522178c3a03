// SPDX-License-Identifier: Apache-2.0
/// @file
/// What tests share that fail each call of a scenario with one error after the other.
#pragma once

#include "kit/posix/call_failure.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace kit {

inline long openFiles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

/// A part of a fixture. It reports how many calls were failed.
class CallSweep {
protected:
    using Action = std::function<void()>;
    /// Told whether what failed may show: what a signal interrupts is repeated, what
    /// is left is transferred, and a kind that a listing hides is looked up.
    using Check = std::function<void(bool harmless)>;

    ~CallSweep() { testing::Test::RecordProperty("points", std::to_string(points_)); }

    /// Fails each call of @p action with each error. @p check runs after each
    /// failure, @p prepare before each run; no run may leave a file open.
    void sweep(const Action& prepare, const Action& action, const Check& check) {
        for (const int error : errors) {
            error_ = error;
            prepare();
            const long before = openFiles();
            points_ += sweepCalls(error, action, [&](const char* call) {
                verify(call, check);
                EXPECT_EQ(openFiles(), before) << call;
                prepare();
            });
            if (testing::Test::HasFailure())
                return;
        }
    }

    /// The same for what a process does once: action and check run in a copy of it.
    void sweepFirstTime(const Action& prepare, const Action& action, const Check& check) {
        for (const int error : errors) {
            error_ = error;
            for (long n = 1;; ++n, ++points_) {
                prepare();
                const int result = inCopy([&] {
                    const char* call = failedCall(n, action);
                    if (call != nullptr)
                        verify(call, check);
                    return call != nullptr;
                });
                ASSERT_LE(result, met) << "in the copy, at call " << n;
                if (result == metNone)
                    break;
            }
        }
    }

    int error_ = 0;              ///< that is being tried
    const char* call_ = nullptr; ///< the function that failed, while it is checked

private:
    enum Result { metNone, met, failed };

    static constexpr int errors[] = {ENOSPC,
                                     EIO,
                                     EACCES,
                                     EMFILE,
                                     ENOENT,
                                     EINVAL,
                                     EINTR,
                                     FailCall::shortTransfer,
                                     FailCall::hiddenKind};

    void verify(const char* call, const Check& check) {
        SCOPED_TRACE(std::string(call) + " number " + std::to_string(error_));
        call_ = call;
        check(error_ == EINTR || error_ < 0);
    }

    const char* failedCall(long n, const Action& action) const {
        const FailCall failure(n, error_);
        action();
        return failure.name();
    }

    static int inCopy(const std::function<bool()>& run) {
        std::fflush(nullptr);
        const pid_t copy = ::fork();
        if (copy == 0) {
            const bool hasMet = run();
            std::fflush(nullptr);
            ::_exit(testing::Test::HasFailure() ? failed : hasMet ? met : metNone);
        }
        int status = -1;
        ::waitpid(copy, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : failed;
    }

    long points_ = 0;
};

} // namespace kit
