// SPDX-License-Identifier: Apache-2.0
/// @file
/// The one place that everything shown to, or asked of, the user goes through.
#pragma once

#include "tools/export.h"
#include "tools/messages/KazProgressMap.h"
#include "tools/strings/KazString.h"

#include <cstdarg>

struct _gu_set_struct_;

/// Routes messages, errors, questions and progress.
///
/// Callers use the static members, or the functions of messages.h, which are
/// the same. These find the installed director and call its `do...` operation.
/// The class itself is the console: errors go to standard error, all else to
/// standard output, and answers come from standard input. A tool that shows its
/// output elsewhere derives from it, overrides what it presents differently and
/// installs one object of its own:
///
/// @code
///   class WindowDirector : public KazIODirector {
///   protected:
///       void doPrintMsg(const char* format, va_list args) override;
///   };
///   (new WindowDirector)->install();
///   KazIODirector::printMsg("%d files copied", count);
/// @endcode
///
/// Formats are printf formats. A null format or text counts as "". Text that
/// comes from outside is an argument, never the format.
///
/// One thread only, and nothing here reports failure: output that cannot be
/// written is lost.
class KAZ_API KazIODirector {
public:
    /// The answers that a question offers. Other values are accepted and offer
    /// no list.
    enum DialogType : int {
        Ok = 0,
        OkCancel = 1,
        RetryCancel = 2,
        YesNo = 3,
        YesNoCancel = 4,
        AbortRetryIgnore = 5
    };

    /// What the user answered.
    enum Reply : int {
        Accept = 0,  ///< Ok, Yes or Retry
        Decline = 1, ///< Cancel, No or Abort
        Ignore = 2   ///< Ignore; as the default of YesNoCancel it marks Cancel
    };

    /// A director that is not installed yet.
    KazIODirector();
    KazIODirector(const KazIODirector&) = delete;
    KazIODirector& operator=(const KazIODirector&) = delete;

    /// Ends the progress that is still under way. A director that is installed,
    /// or to which another would fall back, leaves that chain first.
    virtual ~KazIODirector();

    /// Puts this director in front of the one in force, unless that one is
    /// final; either way the one in force is what this one falls back to. The
    /// director is not owned: it has to outlive its use.
    void install();

    /// The director in force; when there is none, a console director is made.
    /// Never null.
    static KazIODirector* getInstance();

    /// @name Output of an external command
    /// @{

    /// Announces the start of @p command; the result names it in the other calls.
    static int ttyStart(const char* command);
    /// Says that the command has ended.
    static void ttyEnd(int ttyId);
    /// Shows a piece of the command's output.
    static void ttyMsg(int ttyId, const char* format, ...) KAZ_PRINTF(2, 3);
    static void vttyMsg(int ttyId, const char* format, va_list args) KAZ_PRINTF(2, 0);
    /// @}

    /// @name Messages
    /// The console ends a message with a newline, unless its format ends in one.
    /// @{

    /// Shows a message.
    static void printMsg(const char* format, ...) KAZ_PRINTF(1, 2);
    static void vprintMsg(const char* format, va_list args) KAZ_PRINTF(1, 0);
    /// Shows an error; the tool goes on.
    static void printError(const char* format, ...) KAZ_PRINTF(1, 2);
    static void vprintError(const char* format, va_list args) KAZ_PRINTF(1, 0);

    /// An error that the tool cannot survive: the console prints it and ends the
    /// process with status 1. Returns only when an installed director's
    /// doFatalError() does.
    static void fatalError(const char* format, ...) KAZ_PRINTF(1, 2);
    static void vfatalError(const char* format, va_list args) KAZ_PRINTF(1, 0);

    /// A message about @p symbols, for a director that can point at them. The
    /// set stays the caller's; null is passed on.
    static void vprintSymMsg(_gu_set_struct_* symbols, const char* format, va_list args)
        KAZ_PRINTF(2, 0);
    static void vprintSymError(_gu_set_struct_* symbols, const char* format, va_list args)
        KAZ_PRINTF(2, 0);
    /// @}

    /// @name Questions
    /// @{

    /// Asks the user to choose one of the answers of @p type. On the console an
    /// empty line, an unknown answer and the end of input all mean
    /// @p defaultReply; only the first letter of an answer counts, and whatever the
    /// type, it means Accept for o, y and r, Decline for c, n and a, Ignore for i.
    static Reply confirm(const KazString& title, const KazString& message, DialogType type,
                         Reply defaultReply);

    /// Asks for a line of text, without showing what is typed when @p echo is
    /// false. On the console a line has at most 255 characters; what follows is
    /// dropped.
    /// @return false, with @p result unchanged, for an empty line and at the end
    ///         of input.
    static bool getUserInput(KazString& result, const KazString& title, const KazString& prompt,
                             bool echo);
    /// @}

    /// @name Progress
    /// See KazProgressHandle, which most callers want. Advancing or ending an
    /// unknown progress does nothing; a message is shown all the same. The console
    /// begins a message with a newline and ends it with none.
    /// @{

    /// Starts a progress; the console ignores @p total.
    /// @return its number: 1, 2, 3, ... for each director.
    static int progressStart(KazString title, int total);
    /// Advances by @p amount percent of the innermost range, or of the whole with @p flag; an
    /// amount outside 0 to 100 completes it.
    static void progressIncrement(int progressId, double amount, bool flag);
    /// Shows a message beside the progress; @p level is the director's to weigh.
    static void progressMsg(int progressId, int level, const char* format, ...) KAZ_PRINTF(3, 4);
    static void vProgressMsg(int progressId, int level, const char* format, va_list args)
        KAZ_PRINTF(3, 0);
    /// Ends the progress.
    static void progressEnd(int progressId);
    /// Asks the director to start the progress anew; nothing on the console.
    static void reset(int progressId);

    /// Whether the user has asked to stop; never on the console.
    static bool cancelPending(int progressId);
    /// @}

    /// @name Notifications
    /// For directors that give the numbers a meaning; the console has none.
    /// @{

    /// Passes both numbers on.
    static void addCallback(int, int);
    static void removeCallback(int, int);
    /// Passes the number on.
    static void notify(int);
    /// @}

protected:
    // Derived directors are built apart from the library: the order of the
    // virtual operations is part of the interface.

    /// Prints "Executing: " and the command; the result is 0.
    virtual int doTtyStart(const char* command);
    /// Prints "Execution Complete.". Like doTtyStart() it writes to standard output by itself,
    /// not through doPrintMsg(): who shows messages elsewhere overrides all three.
    virtual void doTtyEnd(int ttyId);
    /// Calls doPrintMsg().
    virtual void doTtyMsg(int ttyId, const char* format, va_list args) KAZ_PRINTF(3, 0);
    /// Writes the message to standard output.
    virtual void doPrintMsg(const char* format, va_list args) KAZ_PRINTF(2, 0);
    /// Writes the message to standard error.
    virtual void doPrintError(const char* format, va_list args) KAZ_PRINTF(2, 0);
    /// The console does not return from it; a derived director may.
    virtual void doFatalError(const char* format, va_list args) KAZ_PRINTF(2, 0);
    /// Calls doPrintMsg().
    virtual void doPrintSymMsg(_gu_set_struct_* symbols, const char* format, va_list args)
        KAZ_PRINTF(3, 0);
    /// Calls doPrintError().
    virtual void doPrintSymError(_gu_set_struct_* symbols, const char* format, va_list args)
        KAZ_PRINTF(3, 0);
    /// See confirm().
    virtual Reply doConfirm(const KazString& title, const KazString& message, DialogType type,
                            Reply defaultReply);
    /// See getUserInput().
    virtual bool doGetUserInput(KazString& result, const KazString& title, const KazString& prompt,
                                bool echo);
    /// See progressStart(). What is started here is ended by doProgressEnd() of the same class.
    virtual int doProgressStart(KazString title, int total);
    /// See progressIncrement().
    virtual void doProgressIncrement(int progressId, double amount, bool flag);
    /// See progressMsg().
    virtual void doProgressMsg(int progressId, int level, const char* format, va_list args)
        KAZ_PRINTF(4, 0);
    /// See progressEnd().
    virtual void doProgressEnd(int progressId);

    /// For a director that can serve no longer: the one before it is in force
    /// again. Without one before, this object stays installed, and the static
    /// members use the console's operations from now on.
    virtual void fallBack();

    /// See cancelPending(); false here.
    virtual bool isCancelPending(int progressId);
    /// Non-zero: no other director can take this one's place.
    virtual int isFinal();
    /// Do nothing here.
    virtual void doAddCallback(int, int);
    virtual void doRemoveCallback(int, int);
    virtual void doNotify(int);
    virtual void doStartSubProgress(int progressId, double share, int total);
    virtual void doEndSubProgress(int progressId);
    virtual void doReset(int);

private:
    friend class KazProgressHandle;

    static KazIODirector* theIODirector;

    bool fallenBack_;
    KazIODirector* previous_;
    KazProgressMap progressMap_;
    int progressIdCounter_;
};
