// SPDX-License-Identifier: Apache-2.0
// The director decides who shows something, its screen how. Where the output is no terminal, or
// the style is the console's, the operations of the base class do the work, so that files and
// pipes get byte for byte what they always got. The screen is made at the first use and belongs
// to the director.
#include "tools/messages/KazTerminalDirector.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/messages/KazInterruptWatch.h"
#include "tools/messages/detail/TerminalScreen.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr int fatalStatus = 1;

/// Whether the console would end a message of this format with a newline.
bool wantsNewline(const char* format) {
    const std::size_t length = std::strlen(format);
    return length == 0 || format[length - 1] != '\n';
}

KAZ_PRINTF(1, 0)
KazString formatted(const char* format, va_list args) {
    KazString text;
    text.formatV(format, args);
    return text;
}

} // namespace

class KazTerminalDirector::Screen : public kaz::detail::TerminalScreen {
    using TerminalScreen::TerminalScreen;
};

KazTerminalDirector::KazTerminalDirector(Style style) : wanted_(style) {}

KazTerminalDirector::~KazTerminalDirector() = default;

/// Late, because a director may be static, and variables are read after main() began. To
/// read them may take a message, which needs the screen already.
KazTerminalDirector::Screen& KazTerminalDirector::screen() const {
    if (screen_ != nullptr)
        return *screen_;
    screen_ = std::make_unique<Screen>();
    try {
        screen_->settle(wanted_);
    } catch (...) {
        screen_.reset();
        throw;
    }
    return *screen_;
}

/// False when the console is to show it.
bool KazTerminalDirector::showError(const char* format, va_list args) {
    try {
        if (!screen().changesErrors())
            return false;
        screen().error(formatted(format, args).getValue(), wantsNewline(format));
        return true;
    } catch (const KazMemoryException&) {
        return false;
    }
}

KazTerminalDirector::Style KazTerminalDirector::getStyle() const {
    return screen().style();
}

/// The command writes to the same terminal: nothing is drawn until it has ended.
int KazTerminalDirector::doTtyStart(const char* command) {
    screen().pause();
    return KazIODirector::doTtyStart(screen().onOutput(command).c_str());
}

void KazTerminalDirector::doTtyEnd(int ttyId) {
    KazIODirector::doTtyEnd(ttyId);
    screen().resume();
}

void KazTerminalDirector::doPrintMsg(const char* format, va_list args) {
    if (!screen().outputIsTerminal())
        return KazIODirector::doPrintMsg(format, args);
    if (format == nullptr)
        format = "";
    screen().message(formatted(format, args).getValue(), wantsNewline(format));
}

void KazTerminalDirector::doPrintError(const char* format, va_list args) {
    if (format == nullptr)
        format = "";
    // A list that was read once is of no use to the console.
    va_list again;
    va_copy(again, args);
    // Without memory the console says it: destructors that clear up report errors, too.
    if (!showError(format, args))
        KazIODirector::doPrintError(format, again);
    va_end(again);
}

/// Shown as this class shows errors, whatever a derived director makes of those.
void KazTerminalDirector::doFatalError(const char* format, va_list args) {
    KazTerminalDirector::doPrintError(format, args);
    std::exit(fatalStatus);
}

KazIODirector::Reply KazTerminalDirector::doConfirm(const KazString& title,
                                                    const KazString& message, DialogType type,
                                                    Reply defaultReply) {
    Screen& shown = screen();
    const kaz::detail::ScreenPause pause(shown);
    return KazIODirector::doConfirm(shown.onOutput(title).c_str(), shown.onOutput(message).c_str(),
                                    type, defaultReply);
}

bool KazTerminalDirector::doGetUserInput(KazString& result, const KazString& title,
                                         const KazString& prompt, bool echo) {
    Screen& shown = screen();
    const kaz::detail::ScreenPause pause(shown);
    return KazIODirector::doGetUserInput(result, shown.onOutput(title).c_str(),
                                         shown.onOutput(prompt).c_str(), echo);
}

// The parameter is by value in the interface that directors override.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
int KazTerminalDirector::doProgressStart(KazString title, int total) {
    const int id = screen().isConsole()
                       ? KazIODirector::doProgressStart(screen().onOutput(title).c_str(), total)
                       : 0;
    return screen().start(id, title.getValue(), total);
}

void KazTerminalDirector::doProgressIncrement(int progressId, double amount, bool absolute) {
    if (screen().isConsole())
        KazIODirector::doProgressIncrement(progressId, amount, absolute);
    screen().advance(progressId, amount, absolute);
}

void KazTerminalDirector::doProgressMsg(int progressId, int level, const char* format,
                                        va_list args) {
    if (screen().isConsole())
        KazIODirector::doProgressMsg(progressId, level, format, args);
    else if (screen().style() != Silent)
        screen().message(formatted(format, args).getValue(), true);
}

void KazTerminalDirector::doProgressEnd(int progressId) {
    if (screen().isConsole())
        KazIODirector::doProgressEnd(progressId);
    screen().end(progressId);
}

void KazTerminalDirector::doStartSubProgress(int progressId, double share, int) {
    screen().startStep(progressId, share);
}

void KazTerminalDirector::doEndSubProgress(int progressId) {
    screen().endStep(progressId);
}

bool KazTerminalDirector::isCancelPending(int) {
    return KazInterruptWatch::isStopped();
}

void KazTerminalDirector::doReset(int progressId) {
    screen().restart(progressId);
}
