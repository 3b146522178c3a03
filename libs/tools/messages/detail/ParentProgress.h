// SPDX-License-Identifier: Apache-2.0
/// @file
/// The progress of the tool that has started this one.
#pragma once

#include <climits>

namespace kaz::detail {

/// Where the outermost progress of a child is told instead of shown; see KazChildTool.h.
///
/// Who reports progress asks isOffered() first: a tool that nobody listens to pays a look at
/// a flag. A parent that goes away ends the listening, and the progress is shown nowhere
/// still.
class ParentProgress {
public:
    /// The environment variable that names the pipe.
    static constexpr const char* variable = "KAZ_PROGRESS_FD";
    /// The number of the progress that is told. Directors count from 1 and never get there.
    static constexpr int number = INT_MAX;

    /// Looks for the pipe. @p option gives the value of the tool's option for it, null when
    /// it was not given; it is asked whenever a progress begins.
    static void start(const char* (*option)());

    static bool isOffered() { return isOffered_; }
    /// Makes the progress that begins now the one that is told. False when another one is,
    /// and where the tool has no option for it.
    static bool begin();
    static bool isTold(int id) { return isOffered_ && isOpen_ && id == number; }

    static void increment(double amount, bool absolute);
    static void startStep(double share);
    static void endStep();
    static void reset();
    static void end();

private:
    static void tell();

    static bool isOffered_;
    static bool isOpen_;
};

} // namespace kaz::detail
