// SPDX-License-Identifier: Apache-2.0
/// @file
/// Running another program.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <string>
#include <utility>
#include <vector>

/// A program with its arguments, run without a shell, or one line for the host's command
/// interpreter; its output, and what went wrong, in words.
///
/// @code
///   KazCommand diff("diff");
///   diff.add("-u").add(before).add(after).setTimeout(10000);
///   if (!diff.run())
///       print_err("%s", diff.getErrorText().getValue());
///   show(diff.getOutput());
/// @endcode
///
/// - The program gets the standard streams and no other open file. The streams of this process are
///   flushed first, as shell_cmd() does.
/// - What it leaves running is not waited for; of its output counts what is there at the end.
/// - A program with a time limit is in a process group (on Windows: a job) of its own, which is
///   stopped whole. Signals of the terminal, such as Ctrl-C, do not reach it.
/// - On Windows a batch file is not started as a program: the interpreter would read its
///   arguments. shell() runs one.
/// - Running out of memory meanwhile ends in KazMemoryException: a program without a limit is then
///   waited for, one with a limit is stopped.
///
/// See shell_cmd() for a command whose output the user is to see as it comes.
class KAZ_API KazCommand {
public:
    /// @p program: a path, native text accepted, or a name that is looked for along the search
    /// path of this process. A relative path begins here, whatever setDirectory() says.
    explicit KazCommand(const char* program);
    /// One line that the host's command interpreter reads. add() puts further words behind it,
    /// quoted so that it reads exactly these (on Windows a word cannot hold a line end: run() then
    /// fails with EINVAL).
    static KazCommand shell(const char* line);

    KazCommand& add(const char* argument);      ///< one argument, whatever it holds; null is ""
    KazCommand& setDirectory(const char* path); ///< where it runs; "" is here
    /// A variable of its environment; a null value takes it out. Ignored for a name that is empty
    /// or holds "=".
    KazCommand& setVariable(const char* name, const char* value);
    /// What it reads from standard input; without it, nothing.
    KazCommand& setInput(const KazString& input);
    /// Milliseconds until it is stopped with all that it started; 0 (at first) is no limit.
    KazCommand& setTimeout(int milliseconds);
    /// Bytes of output and of errors that are kept, each; the rest is read and dropped. 64 MiB at
    /// first.
    KazCommand& setOutputLimit(int bytes);

    /// Runs it and waits. True when it ended with status 0. Any earlier result is replaced.
    bool run();
    /// Starts it in the background, without input and output, and does not wait. True when it
    /// was started: getStatus() is then 0. It has no terminal, and lives on when this process ends.
    bool start();
    /// Runs it with this process's own input, output and terminal, and waits. What
    /// setInput(), setTimeout() and setOutputLimit() say does not count; nothing is kept. The
    /// terminal's keys for interruption are for the program alone meanwhile.
    bool runInTerminal();

    /// Its exit status; -1 when it was not started, was ended by a signal or stopped.
    int getStatus() const { return status_; }
    /// That ended it, else 0; also 0 when it was stopped at its limit.
    int getSignal() const { return signal_; }
    int getError() const { return error_; } ///< why it was not started, an errno value, else 0
    /// Whether it was stopped because its time was up.
    bool isTimedOut() const { return timedOut_; }
    const KazString& getOutput() const { return output_; } ///< standard output, byte for byte
    const KazString& getErrors() const { return errors_; } ///< standard error

    /// What went wrong, "" when nothing did. NAME is the program or the line, printable (see
    /// kazPrintable), at most 60 bytes of it and then "...".
    ///
    /// | case                                  | text                                            |
    /// |---------------------------------------|-------------------------------------------------|
    /// | not started                           | "NAME" could not be started: REASON             |
    /// | stopped at its limit                  | "NAME" was stopped after N milliseconds         |
    /// | ended by a signal                     | "NAME" was ended by signal N (SIGSEGV)          |
    /// | line, status 127 (Windows: 9009)      | "NAME": command not found                       |
    /// | line, status 126                      | "NAME": not executable                          |
    /// | Windows, status 0xC0000000 and above  | "NAME" was ended by exception 0xC0000005        |
    /// | any other status above 0              | "NAME" ended with status N                      |
    /// | nobody knows: SIGCHLD is ignored here | "NAME" ended with an unknown status             |
    ///
    /// The last but one is followed by ": " and the last line of getErrors() that is not blank,
    /// printable and at most 200 bytes, when there is one. REASON is the host's text for
    /// getError().
    KazString getErrorText() const;

    /// The command on one line, quoted as a POSIX shell reads it, printable: for messages.
    KazString getText() const;

private:
    struct Run;
    bool execute(Run& run);

    std::vector<std::string> words_;
    std::vector<std::pair<std::string, std::string>> variables_;
    std::vector<std::string> removed_;
    std::string directory_;
    KazString input_, output_, errors_;
    int timeout_ = 0;
    int outputLimit_ = 64 << 20;
    int status_ = -1;
    int signal_ = 0;
    int error_ = 0;
    bool isLine_ = false;
    bool timedOut_ = false;
    bool wasRun_ = false;
    bool byException_ = false;
};
