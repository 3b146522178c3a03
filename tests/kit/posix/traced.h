// SPDX-License-Identifier: Apache-2.0
/// @file
/// Programs under strace, which makes one of their system calls fail.
#pragma once

#include "testkit/process.h"

#include <string>
#include <vector>

namespace kit {

/// Is strace there, and may it trace?
bool canTrace();

/// One system call of a program: the n-th of that name (the first is 1).
struct Call {
    std::string name;
    int number = 0;
    std::string text; ///< as it was made
};

/// The calls that deal in files, in their order, without those that load the
/// program and its libraries: no program survives the failure of these.
std::vector<Call> callsOf(const std::vector<std::string>& argv, const moxkit::RunOptions& options);

/// Runs a program of which that call fails with @p error ("EIO").
moxkit::Result runFailing(const std::vector<std::string>& argv, const moxkit::RunOptions& options,
                          const Call& call, const std::string& error);

/// Runs a program that gets @p signal ("INT") when it makes call number @p number of that
/// name. @p made becomes how many such calls came to their end, instead of being broken
/// off by it.
moxkit::Result runSignalled(const std::vector<std::string>& argv, const moxkit::RunOptions& options,
                            const std::string& call, int number, const std::string& signal,
                            int& made);

} // namespace kit
