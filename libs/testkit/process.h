// SPDX-License-Identifier: Apache-2.0
/// @file
/// Whole programs, run and watched by a test.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace moxkit {

/// How a program is started.
struct RunOptions {
    /// What standard input holds; its end is the end of input.
    std::string input;
    /// Changes to the environment: a value, or removal for moxkit::unset.
    /// KAZCOREROOT is unset unless it is given here, so that a tool is the
    /// outermost one.
    std::map<std::string, std::string> env;
    /// Working directory; that of the test when empty.
    std::string cwd;
    /// Standard input and output are one terminal; `input` is typed into it
    /// once something was written to it. Not on Windows, where it ends the test.
    bool pty = false;
    /// Standard error is that terminal too.
    bool ptyErrors = false;
    /// Starts without standard output.
    bool closeStdout = false;
    /// Starts without standard input.
    bool closeStdin = false;
    /// Sent as soon as `signalAfter` was written to standard output (0: never).
    /// Not on Windows, where it ends the test.
    int signal = 0;
    /// What is waited for before `signal` is sent; "": nothing.
    std::string signalAfter;
    /// Standard output goes to this file instead ("/dev/full").
    std::string stdoutFile;
    /// The program is ended by force after this many seconds. On POSIX the run is, with 9 (SIGKILL)
    /// as its signal, also where the program itself has ended and something that it has started
    /// still holds its standard output or error; Windows waits for that.
    int timeoutSeconds = 60;
};

/// The value of a variable in RunOptions::env that takes it out.
inline const std::string unset("\0", 1);

/// How a program ended.
struct Result {
    /// Exit status, or -1 when a signal ended it; 127 when it could not be started.
    int status = -1;
    /// The signal that ended it, or 0.
    int signal = 0;
    /// What it wrote to standard output; with `pty`, what the terminal showed.
    std::string out;
    /// What it wrote to standard error.
    std::string err;
    /// With `pty`: did the terminal echo at the moment when the input was typed?
    bool echoAtInput = true;
    /// With `pty`: does the terminal echo at the end?
    bool echoAtEnd = true;
};

/// Runs argv[0] (a path, or the plain name of a program that lies beside the test's own)
/// with the words behind it to its end, and waits for that.
Result run(const std::vector<std::string>& argv, const RunOptions& options = {});

/// The directory of the test's own program, as the host spells it.
std::string binDirectory();

} // namespace moxkit
