// SPDX-License-Identifier: Apache-2.0
/// @file
/// Random tests that say how to run them again.
#pragma once

#include "testkit/random.h"

#include <gtest/gtest.h>

namespace kit {

/// The run's random numbers; whatever fails while it exists shows their seed.
struct Random : moxkit::Random {
    explicit Random(const char* file = __builtin_FILE(), int line = __builtin_LINE())
        : moxkit::Random(moxkit::seed()), trace(file, line, moxkit::seedText()) {}

    testing::ScopedTrace trace;
};

} // namespace kit
