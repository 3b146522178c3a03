// SPDX-License-Identifier: Apache-2.0
/// @file
/// The director for people at a terminal.
#pragma once

#include "tools/export.h"
#include "tools/messages/KazIODirector.h"

#include <memory>

/// Shows a progress as one live line, messages above it:
///
///     Copying plant [########........]  50% 20/40 10.2/s 0:02 ETA 0:02
///
/// @code
///   class CopyTool : public KazConsoleApp {
///       int runTool(int argc, char** argv) override {
///           KazTerminalDirector director;
///           director.install();
///           ...
/// @endcode
///
/// A stream that is no terminal gets exactly the bytes of the console, that is of
/// KazIODirector: scripts see no difference. On a terminal
/// - the line is drawn on standard error, or on standard output when only that is a
///   terminal; at the start, at most every 50 ms after that, after each message, when
///   the progress is complete and when it ends. Then it stays, and the cursor goes to
///   the next line. Of several progresses the one that began first is shown;
/// - nothing in a text steers the terminal: control characters other than newline and
///   tab show as "^X", DEL as "^?", C1 controls, marks of direction and what is no text as "?";
/// - errors are red, unless the user wants no colours.
///
/// What people set, as environment variables or in `ToolInfo` files (these are read
/// only where one can be opened):
/// - `progress` ("KAZ_PROGRESS"): bar, lines, dots, none, or auto, which is a bar;
/// - `colour` ("KAZ_COLOUR"): yes or no; else "NO_COLOR", "CLICOLOR_FORCE" and
///   "CLICOLOR" count as programs have agreed on.
///
/// It needs no thread, timer or signal handler and never hides the cursor: a line
/// moves when the tool reports, and a killed tool leaves a sane terminal. Whoever wants
/// an interrupt to be a cancellation makes a KazInterruptWatch.
class KAZ_API KazTerminalDirector : public KazIODirector {
public:
    /// How progress is shown.
    enum Style : int {
        Automatic, ///< what the user has set, else Bar
        Bar,       ///< one live line; Dots where there is no terminal that can show it
        Lines,     ///< a line on standard error at each tenth and after 30 s of silence
        Dots,      ///< as the console
        Silent     ///< no progress is shown; messages and questions are
    };

    /// Not installed yet. Automatic leaves the choice to the user.
    explicit KazTerminalDirector(Style style = Automatic);
    ~KazTerminalDirector() override;

    /// The style in force, never Automatic. It is settled by the first call of this
    /// or by the first operation.
    Style getStyle() const;

protected:
    /// What the console does, with the live line out of its way.
    int doTtyStart(const char* command) override;
    void doTtyEnd(int ttyId) override;
    void doPrintMsg(const char* format, va_list args) override KAZ_PRINTF(2, 0);
    void doPrintError(const char* format, va_list args) override KAZ_PRINTF(2, 0);
    void doFatalError(const char* format, va_list args) override KAZ_PRINTF(2, 0);
    Reply doConfirm(const KazString& title, const KazString& message, DialogType type,
                    Reply defaultReply) override;
    bool doGetUserInput(KazString& result, const KazString& title, const KazString& prompt,
                        bool echo) override;
    int doProgressStart(KazString title, int total) override;
    void doProgressIncrement(int progressId, double amount, bool absolute) override;
    void doProgressMsg(int progressId, int level, const char* format, va_list args) override
        KAZ_PRINTF(4, 0);
    void doProgressEnd(int progressId) override;
    void doStartSubProgress(int progressId, double share, int total) override;
    void doEndSubProgress(int progressId) override;
    /// Whether a KazInterruptWatch has noted a signal.
    bool isCancelPending(int progressId) override;
    void doReset(int progressId) override;

private:
    class Screen;
    Screen& screen() const;
    bool showError(const char* format, va_list args) KAZ_PRINTF(2, 0);

    Style wanted_;
    mutable std::unique_ptr<Screen> screen_;
};
