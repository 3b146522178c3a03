/// @file
/// How moxcopy shows its progress, and how it notices that the user has enough.
#pragma once

#include "tools/messages/KazIODirector.h"
#include "tools/messages/KazProgress.h"

#include <memory>

/// While it exists, an interrupt from the keyboard is noted instead of ending
/// the process.
class InterruptWatch {
public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    static bool interrupted();

private:
    void (*previous_)(int);
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
    Style style_;
    std::unique_ptr<KazProgress> progress_;
    double reached_ = 0; ///< the percentage at which the step under way will end
};
