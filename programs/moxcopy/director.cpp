// SPDX-License-Identifier: Apache-2.0
#include "director.h"

#include "tools/moxtools.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iterator>

namespace {

/// A signal handler may do no more than set this.
volatile std::sig_atomic_t noted = 0;

void note(int signal) {
    noted = signal;
}

/// Not every host has all of them.
constexpr int signals[] = {
    SIGINT,  SIGTERM,
#ifdef SIGHUP
    SIGHUP,
#endif
#ifdef SIGPIPE
    SIGPIPE,
#endif
#ifdef SIGXFSZ
    SIGXFSZ,
#endif
};

void (*previous[std::size(signals)])(int);

bool comments = false;

} // namespace

SignalWatch::SignalWatch() {
    for (std::size_t i = 0; i < std::size(signals); ++i) {
        previous[i] = std::signal(signals[i], note);
        // Who starts a tool in the background wants it to ignore the keyboard.
        if (previous[i] == SIG_IGN)
            std::signal(signals[i], SIG_IGN);
    }
}

SignalWatch::~SignalWatch() {
    for (std::size_t i = 0; i < std::size(signals); ++i)
        if (previous[i] != SIG_ERR)
            std::signal(signals[i], previous[i]);
}

bool SignalWatch::isStopped() {
    return noted != 0;
}

void SignalWatch::endBySignal() {
    const int signal = noted;
    if (signal == 0 || signal == SIGINT)
        return;
    std::fflush(nullptr);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

CopyDirector::CopyDirector(Style style) : style_(style) {
    comments = style == Commentary;
}

bool CopyDirector::isCommenting() {
    return comments;
}

/// Notes the first reason why output is lost. A standard output that the process was
/// started without fails with EBADF.
template <typename Write>
void CopyDirector::watched(Write write) {
    errno = 0;
    write();
    if (std::ferror(stdout) == 0)
        return;
    if (outputError_ == 0 && errno != EBADF)
        outputError_ = errno != 0 ? errno : EIO;
    std::clearerr(stdout);
}

CopyDirector::~CopyDirector() = default;

void CopyDirector::doPrintMsg(const char* format, va_list args) {
    if (style_ != Silent)
        watched([&] { KazIODirector::doPrintMsg(format, args); });
}

int CopyDirector::doProgressStart(KazString title, int) {
    if (style_ == Dots) {
        watched([&] {
            std::printf("%s ", title.getValue());
            std::fflush(stdout);
        });
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
    watched([&] {
        progress_->increment(amount, absolute);
        if (style_ == Dots)
            std::fflush(stdout);
    });
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
        watched([] {
            std::puts("");
            std::fflush(stdout);
        });
    progress_.reset();
}

bool CopyDirector::isCancelPending(int) {
    return SignalWatch::isStopped();
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
