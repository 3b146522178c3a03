// SPDX-License-Identifier: Apache-2.0
/// @file
/// How moxcopy shows its progress, and how it notices that it is to stop.
#pragma once

#include "tools/messages/KazIODirector.h"
#include "tools/messages/KazProgress.h"

#include <memory>

/// While it exists, the signals that ask a process to end (an interrupt from the
/// keyboard, a closed terminal or pipe, a file that would grow too large, a plain kill)
/// are noted instead. One that was ignored when the process was started stays so.
class SignalWatch {
public:
    SignalWatch();
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    static bool isStopped();
    /// Ends the process by the signal that was noted, as if nobody had watched. Returns
    /// after an interrupt from the keyboard, which is a cancellation like any other.
    static void endBySignal();
};

/// The console, with a progress that knows its steps. One progress at a time.
class CopyDirector : public KazIODirector {
public:
    enum Style {
        Dots,       ///< a growing line of dots
        Commentary, ///< each progress message on a line, with the percentage
        Silent      ///< errors and questions only
    };
    explicit CopyDirector(Style style);
    ~CopyDirector() override;

    /// Does the director show progress messages? They need not be made otherwise.
    static bool isCommenting();
    /// Why output was lost, an errno value; 0 when none was. A process that was started
    /// without a standard output loses none.
    int outputError() const { return outputError_; }

protected:
    void doPrintMsg(const char* format, va_list args) override KAZ_PRINTF(2, 0);
    int doProgressStart(KazString title, int total) override;
    void doProgressIncrement(int progressId, double amount, bool absolute) override;
    void doProgressMsg(int progressId, int level, const char* format, va_list args) override
        KAZ_PRINTF(4, 0);
    void doProgressEnd(int progressId) override;
    bool isCancelPending(int progressId) override;
    void doStartSubProgress(int progressId, double share, int total) override;
    void doEndSubProgress(int progressId) override;

private:
    template <typename Write>
    void watched(Write write);

    Style style_;
    std::unique_ptr<KazProgress> progress_;
    double reached_ = 0; ///< the percentage at which the step under way will end
    int outputError_ = 0;
};
