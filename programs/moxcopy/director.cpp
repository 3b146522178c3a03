#include "director.h"

#include "tools/moxtools.h"

#include <csignal>
#include <cstdio>

namespace {

/// A signal handler may do no more than set this.
volatile std::sig_atomic_t interruptCount = 0;

void noteInterrupt(int) {
    interruptCount = 1;
}

} // namespace

InterruptWatch::InterruptWatch() : previous_(std::signal(SIGINT, noteInterrupt)) {
    // Who starts a tool in the background wants it to ignore the keyboard.
    if (previous_ == SIG_IGN)
        std::signal(SIGINT, SIG_IGN);
}

InterruptWatch::~InterruptWatch() {
    if (previous_ != SIG_ERR)
        std::signal(SIGINT, previous_);
}

bool InterruptWatch::interrupted() {
    return interruptCount != 0;
}

CopyDirector::CopyDirector(Style style) : style_(style) {}

CopyDirector::~CopyDirector() = default;

void CopyDirector::doPrintMsg(const char* format, va_list args) {
    if (style_ != Silent)
        KazIODirector::doPrintMsg(format, args);
}

int CopyDirector::doProgressStart(KazString title, int) {
    if (style_ == Dots) {
        std::printf("%s ", title.getValue());
        progress_ = std::make_unique<KazConsoleProgress>();
    } else {
        progress_ = std::make_unique<KazNGProgress>();
    }
    progress_->initialize(true);
    reached_ = 0;
    return 1;
}

void CopyDirector::doProgressIncrement(int, double amount, bool absolute) {
    if (progress_ == nullptr)
        return;
    progress_->increment(amount, absolute);
    if (style_ == Dots)
        std::fflush(stdout);
}

void CopyDirector::doProgressMsg(int, int, const char* format, va_list args) {
    if (style_ != Commentary || progress_ == nullptr)
        return;
    KazString text;
    text.formatV(format, args);
    printMsg("[%3.0f%%] %s", progress_->get(true), text.getValue());
}

void CopyDirector::doProgressEnd(int) {
    if (style_ == Dots)
        std::puts("");
    progress_.reset();
}

bool CopyDirector::isCancelPending(int) {
    return InterruptWatch::interrupted();
}

/// Stored progress is a whole number; a step that starts from it and lasts to
/// where all steps so far should end loses nothing to rounding.
void CopyDirector::doStartSubProgress(int, double share, int) {
    if (progress_ == nullptr)
        return;
    reached_ += share;
    progress_->pushRange(reached_ - progress_->get(true));
}

void CopyDirector::doEndSubProgress(int) {
    if (progress_ != nullptr)
        progress_->popRange();
}
