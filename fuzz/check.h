// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a harness holds to be true, in every build.
#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program, with a message, unless @p condition holds.
#define FUZZ_CHECK(condition)                                                                      \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: not true: %s\n", __FILE__, __LINE__, #condition);         \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
