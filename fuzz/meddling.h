// SPDX-License-Identifier: Apache-2.0
/// @file
/// Element functions that use the container which is just calling them.
#pragma once

#include "fuzz/input.h"

#include <functional>
#include <utility>

namespace fuzz {

/// While one is there, now() may do one operation more: the input decides.
class Meddling {
public:
    Meddling(Input& input, std::function<void()> operation) {
        meddle_ = [&input, operation = std::move(operation)] {
            if (!input.empty() && input.between(0, 2) == 0)
                operation();
        };
    }
    Meddling(const Meddling&) = delete;
    Meddling& operator=(const Meddling&) = delete;
    ~Meddling() { meddle_ = nullptr; }

    static void now() {
        if (!meddle_ || depth_ > 2)
            return;
        ++depth_;
        meddle_();
        --depth_;
    }
    /// Is a container about its own work?
    static bool isInside() { return depth_ > 0; }

private:
    static inline std::function<void()> meddle_;
    static inline int depth_ = 0;
};

} // namespace fuzz
