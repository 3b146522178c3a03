// SPDX-License-Identifier: Apache-2.0
/// @file
/// Being asked to stop.
#pragma once

#include "tools/export.h"

/// While one exists, the signals that ask a process to end are noted instead: an interrupt
/// from the keyboard, a plain kill and, on POSIX, a closed terminal or pipe and a file that
/// would grow too large. One that was ignored when the process was started stays so.
///
/// A tool that leaves nothing half done asks for it; KazTerminalDirector then says that
/// the user wants to cancel, and the progress's cancel handler clears up:
///
/// @code
///   void cancel() {
///       removeWhatWasMade();
///       KazInterruptWatch::endBySignal();
///   }
///   ...
///       const KazInterruptWatch watch;
///       KazProgressHandle progress("Copying", count);
///       progress.setCancelHandler(cancel);
/// @endcode
///
/// They nest; the outermost counts. One thread only.
class KAZ_API KazInterruptWatch {
public:
    /// The outermost forgets what an earlier one has noted.
    KazInterruptWatch();
    ~KazInterruptWatch();
    KazInterruptWatch(const KazInterruptWatch&) = delete;
    KazInterruptWatch& operator=(const KazInterruptWatch&) = delete;

    /// Has such a signal come, under this watch or the last one?
    static bool isStopped();

    /// Ends the process by the signal that was noted, as if nobody had watched: whoever
    /// has started it sees what ended it. Returns when there was none, and after an
    /// interrupt from the keyboard, which is a cancellation like any other.
    static void endBySignal();
};
