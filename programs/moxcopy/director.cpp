// SPDX-License-Identifier: Apache-2.0
// What is shown depends on the manner that the user has chosen; how it is shown is left to the
// director of terminals. Every operation that writes is watched, since the loss of output is told
// at the end, once.
#include "director.h"

#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace {

bool comments = false;

} // namespace

CopyDirector::CopyDirector(Manner manner)
    : KazTerminalDirector(manner == Quiet ? Silent : Automatic), manner_(manner) {
    comments = manner == Commentary;
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

void CopyDirector::doPrintMsg(const char* format, va_list args) {
    if (manner_ != Quiet)
        watched([&] { KazTerminalDirector::doPrintMsg(format, args); });
}

// The parameter is by value in the interface that directors override.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
int CopyDirector::doProgressStart(KazString title, int total) {
    writesDots_ = getStyle() == Dots || (getStyle() != Silent && !TI_isTerminal(stdout));
    percent_ = 0;
    int id = 1;
    // A line for each file and dots do not go together.
    if (manner_ != Commentary || !writesDots_)
        watched([&] { id = KazTerminalDirector::doProgressStart(title, total); });
    return id;
}

void CopyDirector::doProgressIncrement(int progressId, double amount, bool absolute) {
    percent_ = std::min(absolute ? amount : percent_ + amount, 100.0);
    if (manner_ != Commentary || !writesDots_)
        watched([&] { KazTerminalDirector::doProgressIncrement(progressId, amount, absolute); });
}

void CopyDirector::doProgressMsg(int, int, const char* format, va_list args) {
    if (manner_ != Commentary)
        return;
    KazString text;
    text.formatV(format, args);
    printMsg("[%3.0f%%] %s", percent_, text.getValue());
}

void CopyDirector::doProgressEnd(int progressId) {
    if (manner_ == Commentary && writesDots_)
        return;
    watched([&] {
        KazTerminalDirector::doProgressEnd(progressId);
        if (writesDots_) {
            std::puts("");
            std::fflush(stdout);
        }
    });
}
