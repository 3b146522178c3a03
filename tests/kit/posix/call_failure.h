// SPDX-License-Identifier: Apache-2.0
/// @file
/// Calls of the C library that fail on demand. A test program that uses this has
/// call_failure.cpp among its own sources.
#pragma once

#include <cstdlib>

namespace kit {

/// Makes the n-th call from now (the first is 1) fail with an errno value, until
/// destruction. All functions that deal in files and that the library calls
/// itself count together, in the order of the calls, and so does what a stream reads
/// and writes that was opened meanwhile; what else the C library does within one of
/// them does not. A descriptor that cannot be closed is closed all the same, as on
/// Linux.
class FailCall {
public:
    FailCall(long n, int error);
    ~FailCall();
    FailCall(const FailCall&) = delete;
    FailCall& operator=(const FailCall&) = delete;

    /// As the error: reads, writes and copies alone count, and the n-th of them
    /// transfers one byte only.
    static constexpr int shortTransfer = -1;
    /// As the error: entries that are listed count alone, and the n-th does not tell
    /// its kind.
    static constexpr int hiddenKind = -2;

    /// Has a call failed yet?
    bool hit() const;
    /// The name of the function that did.
    const char* name() const;
};

/// Runs @p action with the 1st, 2nd, ... call failing, until a run meets no
/// failure any more. @p check(name of the function) runs after each run that met
/// one. Returns how many calls were failed.
template <typename Action, typename Check>
long sweepCalls(int error, Action action, Check check) {
    for (long n = 1;; ++n) {
        bool hit = false;
        const char* name = nullptr;
        {
            const FailCall failure(n, error);
            action();
            hit = failure.hit();
            name = failure.name();
        }
        if (!hit)
            return n - 1;
        check(name);
    }
}

} // namespace kit
