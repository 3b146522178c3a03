// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a tool holds while it reports progress.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <cstdarg>

/// Opens a numbered progress with the IO director and ends it when it goes.
///
/// @code
///   KazProgressHandle copying("Copying", count);
///   copying.setCancelHandler(removeWhatWasCopied);
///   for (...)
///       copying.increment(100.0 / count, false);
/// @endcode
///
/// With a cancel handler, each increment and each message asks whether the user
/// wants to stop; if so the handler runs and the process ends with status 9.
///
/// Copies share the progress number; the first of them to go ends the progress,
/// and the others report to nobody.
class KAZ_API KazProgressHandle {
public:
    /// @param name  shown to the user
    /// @param n     handed to the director, which gives it a meaning
    KazProgressHandle(KazString name, int n);
    KazProgressHandle(const KazProgressHandle&) = default;
    KazProgressHandle& operator=(const KazProgressHandle&) = default;
    virtual ~KazProgressHandle();

    /// Whether the user wants to stop; calls no handler.
    bool cancelPending();

    /// Advances by @p delta percent of the innermost range, or of the whole when
    /// @p absolute. A @p delta outside 0 to 100 completes it.
    void increment(double delta, bool absolute);

    /// Shows a message beside the progress; @p level is the director's to weigh.
    void msg(int level, const char* format, ...) KAZ_PRINTF(3, 4);
    /// What msg() calls with its arguments.
    virtual void vMsg(int level, const char* format, va_list args) KAZ_PRINTF(3, 0);

    /// Opens and closes a step that takes @p share percent of this progress, in
    /// directors that know steps; the console does not.
    void startSubProgress(double share, int n);
    void endSubProgress();

    /// This progress as an option for a child tool's command line:
    /// " -progress_channel <number>:<a>", and ":<b>" when @p b is not 0.
    KazString asCmdLine(int a, int b);

    /// Takes the option's value apart again, for directors that attach a child's
    /// progress to its parent's; the console has nothing to attach to.
    /// @return false, with the numbers unchanged, when @p channel is null or
    ///         anything else than such a value
    static bool parseChannel(const char* channel, int& id, int& a, int& b);

    /// Null turns the checks for cancellation off. A handler that may throw must
    /// not destroy this handle.
    void setCancelHandler(void (*handler)());
    /// The same for a handler that is called with @p data, which stays the caller's. It
    /// belongs to the progress: copies of this handle share it, and it goes with the first
    /// of them.
    void setCancelHandler(void (*handler)(void* data), void* data);

    /// When the user wants to stop: runs the cancel handler, if there is one,
    /// and ends the process with status 9. Otherwise nothing. The handler runs
    /// once: what it does with this handle makes no further checks. One that throws
    /// stays set, and the process goes on.
    void checkCancel();

    /// Asks the director to start this progress anew; the console does nothing.
    void reset();

private:
    friend KAZ_API int kazRunTool(KazProgressHandle& progress, double share,
                                  const char* const* argv); ///< see KazChildTool.h

    int id_;
    int reserved_ = 0; // kept for the layout that tools are built against
    void (*cancelHandler_)() = nullptr;
};
