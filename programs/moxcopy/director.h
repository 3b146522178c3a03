// SPDX-License-Identifier: Apache-2.0
/// @file
/// How moxcopy shows its progress.
#pragma once

#include "tools/messages/KazTerminalDirector.h"

/// A live line on a terminal, the console's dots elsewhere; and it knows whether output
/// was lost. One progress at a time.
class CopyDirector : public KazTerminalDirector {
public:
    enum Manner {
        Plain,      ///< the progress alone
        Commentary, ///< each progress message on a line, with the percentage; no dots
        Quiet       ///< errors and questions only
    };
    explicit CopyDirector(Manner manner);

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

private:
    template <typename Write>
    void watched(Write write);

    Manner manner_;
    bool writesDots_ = false; ///< standard output gets the console's progress
    double percent_ = 0;      ///< of the progress under way
    int outputError_ = 0;
};
