// SPDX-License-Identifier: Apache-2.0
/// @file
/// A part of the door to the operating system (see host.h): other programs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::host {

int processId();

/// Where the host looks for programs when nobody says so, in its own spelling: what
/// "PATH" holds when it is not set. Empty where there is no such thing (Windows).
std::string defaultSearchPath();

/// Writes out what the process's streams still hold: all of stdio, and std::cout,
/// std::cerr, std::clog and their wide kin, which keep text of their own once they are
/// not synchronised with stdio. Failures stay with the streams; nothing is thrown.
void flushStreams();

/// One word for the host's command interpreter that it reads as exactly @p word.
/// Empty where that cannot be: on Windows a line end.
std::string interpreterWord(std::string_view word);

/// The name of a signal without a locale, "SIGSEGV"; "SIG" and its number where it has
/// none.
std::string signalName(int signal);

/// The statuses with which the host's command interpreter says that it has found no such
/// command, or may not run it; below -1 where it has none for that.
extern const int interpreterFindsNothing;
extern const int interpreterMayNotRun;

/// Receives a child's output as it arrives, in pieces of any size. May throw:
/// the child's output is then closed, and the child awaited first, or stopped if it
/// has a limit.
class OutputSink {
public:
    virtual void write(const char* data, std::size_t size) = 0;

protected:
    ~OutputSink() = default;
};

/// Is asked, several times a second, whether a child that runs shall end.
class StopWatch {
public:
    virtual bool isStopWanted() = 0;

protected:
    ~StopWatch() = default;
};

/// How a child process ended.
struct Completion {
    int error = 0;  ///< why it was never started, an errno value; 0 when it was
    int status = 0; ///< its exit status; -1 when it was not started, stopped or died by a signal
    int signal = 0; ///< the signal that ended it of itself, else 0
    bool isStopped = false; ///< at its limit
    /// The code of the exception that ended it, where the host has such codes, else 0.
    std::uint32_t exception = 0;
};

/// What to start, and with what around it.
struct Launch {
    /// The program and its arguments, which are passed untouched. The program is
    /// searched for along this process's search path when it holds no separator; else a
    /// native path is accepted, and a relative one begins here, not in `directory`.
    /// With `isLine` the only word is a line for the host's command interpreter, which
    /// takes no part of it for an option of its own.
    std::vector<std::string> words;
    bool isLine = false;

    std::string directory; ///< native; "" is here
    /// Names and values; neither a name twice nor one that is also removed.
    std::vector<std::pair<std::string, std::string>> variables;
    std::vector<std::string> removed; ///< names

    enum Input {
        shared, ///< this process's standard input
        none,   ///< its end at once
        text,   ///< `input`
    };
    Input inputKind = none;
    std::string_view input;

    /// Where standard output and error go; null is where this process's go. One sink for
    /// both gets them in the order in which they were written.
    OutputSink* output = nullptr;
    OutputSink* errors = nullptr;
    bool isText = false; ///< line ends arrive as one character, however the host has them
    /// Gets what the child writes to one more pipe, whose number it finds in the variable
    /// `reportVariable` (see LineWriter::handedOn); null for none. Not with `inheritsFiles`.
    OutputSink* reports = nullptr;
    const char* reportVariable = "";
    /// Once it says so the child, not what that has started, is asked to end (SIGTERM; on
    /// Windows it is ended with status 143); one that takes longer than five seconds is
    /// killed. Null for none.
    StopWatch* watch = nullptr;

    /// Milliseconds until it is stopped with all that it started and that did not leave
    /// its process group; 0 is no limit. A child with a limit does not get the signals of
    /// this process's terminal.
    int timeout = 0;
    /// Not awaited, without a terminal, input and output.
    bool isDetached = false;
    /// Inherits what this process has open and does not close on exec.
    bool inheritsFiles = false;
    /// The child has the terminal meanwhile: its keys for interruption are not for this
    /// process.
    bool ownsTerminal = false;
};

/// Starts a program and waits for its end; not for that of what it left behind, of
/// which only the output counts that was there at the end. Streams of this process are
/// flushed first. The child has no signal blocked, and SIGPIPE and SIGCHLD at their
/// defaults.
void start(const Launch& launch, Completion& completion);

/// Runs a program whose output goes to @p sink, both kinds together; without one the
/// child shares this process's. Standard input is shared.
Completion run(const std::vector<std::string>& arguments, OutputSink* sink);

/// The same for one line that the host's command interpreter reads.
Completion runShell(const char* command, OutputSink* sink);

} // namespace kaz::host
