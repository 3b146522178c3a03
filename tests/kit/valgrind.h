// SPDX-License-Identifier: Apache-2.0
/// @file
/// Tests of what valgrind does in its own way.
#pragma once

#include <gtest/gtest.h>

namespace kit {

/// Marks the running test: the run under valgrind leaves it out, as valgrind makes a plain
/// fork of a vfork, say, or brings an allocator of its own.
inline void leaveOutUnderValgrind(const char* reason) {
    testing::Test::RecordProperty("not_under_valgrind", reason);
}

} // namespace kit
