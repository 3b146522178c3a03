// SPDX-License-Identifier: Apache-2.0
/// @file
/// Allocations that fail on demand.
#pragma once

namespace moxkit {

/// Makes the n-th allocation from now (the first is 1) fail, by malloc, calloc,
/// realloc or operator new, on any thread, until destruction. A failed
/// operator new, and the library's own allocation, then run the installed
/// new-handler; where none is installed the constructor installs one that
/// throws KazMemoryException. Under valgrind, which brings an allocator of its own,
/// none fails.
class FailAllocation {
public:
    /// How many fail.
    enum Mode {
        once,  ///< the n-th alone
        onward ///< the n-th and all that follow
    };

    explicit FailAllocation(long n, Mode mode = once); ///< counts from here on
    ~FailAllocation();                                 ///< all succeed again
    FailAllocation(const FailAllocation&) = delete;
    FailAllocation& operator=(const FailAllocation&) = delete;

    /// Has an allocation failed yet?
    bool hit() const;
};

/// Inside, allocations succeed and do not count: for what a test does in between on its
/// own account.
class AllocationsPass {
public:
    AllocationsPass();  ///< the count stands still
    ~AllocationsPass(); ///< the count goes on
    AllocationsPass(const AllocationsPass&) = delete;
    AllocationsPass& operator=(const AllocationsPass&) = delete;

private:
    long left_;
};

/// Runs @p action with the 1st, 2nd, ... allocation failing, until a run meets
/// no failure any more. @p action (callable without arguments) is expected to
/// let KazMemoryException escape or to bring its own result; @p check runs
/// after each run that met a failure. Returns how many allocations were failed.
template <typename Action, typename Check>
long sweepAllocations(Action action, Check check, FailAllocation::Mode mode = FailAllocation::once);

} // namespace moxkit

#include "tools/app/exceptions/KazMemoryException.h"

namespace moxkit {

template <typename Action, typename Check>
long sweepAllocations(Action action, Check check, FailAllocation::Mode mode) {
    for (long n = 1;; ++n) {
        bool hit = false;
        {
            FailAllocation failure(n, mode);
            try {
                action();
            } catch (const KazMemoryException&) {
                // What it leaves behind is for the check to judge.
            }
            hit = failure.hit();
        }
        if (!hit)
            return n - 1;
        check();
    }
}

} // namespace moxkit
