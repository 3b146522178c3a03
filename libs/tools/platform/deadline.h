// SPDX-License-Identifier: Apache-2.0
/// @file
/// Time limits of whole calls.
#pragma once

#include <algorithm>
#include <chrono>
#include <climits>

namespace kaz::host {

/// A moment on the monotonic clock, or none.
class Deadline {
public:
    /// So many milliseconds from now; below 0 there is none.
    explicit Deadline(int milliseconds)
        : exists_(milliseconds >= 0),
          end_(Clock::now() + std::chrono::milliseconds(exists_ ? milliseconds : 0)) {}

    /// Milliseconds until then, rounded up; 0 when it has come, -1 when there is none.
    int left() const {
        if (!exists_)
            return -1;
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now());
        return static_cast<int>(std::clamp<long long>(rest.count(), 0, INT_MAX));
    }

    bool isOver() const { return exists_ && Clock::now() >= end_; }

private:
    using Clock = std::chrono::steady_clock;
    bool exists_;
    Clock::time_point end_;
};

} // namespace kaz::host
