// SPDX-License-Identifier: Apache-2.0
// One countdown for the whole process, as allocations come from every module and thread. The hooks
// ask it at each allocation; installing them, and all that must not fail, comes before it is set.
#include "testkit/alloc_failure.h"

#include "testkit/detail/alloc_hooks.h"

#include <atomic>
#include <cerrno>
#include <new>
#include <thread>
#include <utility>

namespace moxkit {

namespace {

// Counts down to the failing allocation; 0 is off, below 0 fails from here on.
constinit std::atomic<long> countdown{0};
constinit std::atomic<bool> failOnward{false};
constinit std::atomic<bool> hasHit{false};

void throwMemoryException() {
    throw KazMemoryException();
}

/// Where memory for an exception fails, the C++ runtime takes it from a reserve. On
/// some hosts the lock of the reserve is made on first use, and without memory that
/// never ends: so it is used once while there is memory for the lock.
void useReserveOnce() {
    static bool used = false;
    if (std::exchange(used, true))
        return;
    countdown = 1;
    try {
        throwMemoryException();
    } catch (const KazMemoryException&) {
        countdown = 0;
    }
}

/// With one thread the library takes blocks of strings that are freed for new ones,
/// and asks for no memory. From here on it has had a second thread and asks.
void haveTwoThreadsOnce() {
    static const bool had = [] {
        std::thread([] {}).join();
        return true;
    }();
    static_cast<void>(had);
}

} // namespace

/// Called inside malloc(), so nothing here may allocate or lock.
bool detail::shallFail() {
    long left = countdown.load(std::memory_order_relaxed);
    if (left == 0)
        return false;
    if (left > 0) {
        // Another thread may have counted since the load above: what is counted now decides.
        left = countdown.fetch_sub(1) - 1;
        if (left > 0)
            return false;
        if (failOnward)
            countdown = -1;
    }
    hasHit = true;
    errno = ENOMEM;
    return true;
}

FailAllocation::FailAllocation(long n, Mode mode) {
    if (detail::atFailure != nullptr)
        detail::atFailure();
    detail::installHooks();
    if (std::get_new_handler() == nullptr)
        std::set_new_handler(throwMemoryException);
    failOnward = false;
    haveTwoThreadsOnce();
    useReserveOnce();
    hasHit = false;
    failOnward = mode == onward;
    // Last: whatever runs from here on may fail.
    countdown = n;
}

FailAllocation::~FailAllocation() {
    countdown = 0;
}

bool FailAllocation::hit() const {
    return hasHit;
}

/// The rest of the countdown waits, so that a test's own allocations do not shift the failing one.
AllocationsPass::AllocationsPass() : left_(countdown.exchange(0)) {}

AllocationsPass::~AllocationsPass() {
    countdown = left_;
}

} // namespace moxkit
