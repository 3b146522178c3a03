// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a command line asks to be traced.
#pragma once

#include <cstddef>

namespace kaz::detail {

/// Traces these topics, too, and writes all traces to @p file from here on. Null stays with
/// what is in force; of several files the first one counts, and without any topic it means
/// all. The texts are copied.
void requestTraces(const char* const* topics, std::size_t count, const char* file);

/// While it lives nothing is traced, whoever asked: for who is shown nothing.
class TraceSilence {
public:
    TraceSilence();
    ~TraceSilence();
    TraceSilence(const TraceSilence&) = delete;
    TraceSilence& operator=(const TraceSilence&) = delete;
};

} // namespace kaz::detail
