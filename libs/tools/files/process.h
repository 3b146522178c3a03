// SPDX-License-Identifier: Apache-2.0
/// @file
/// Process helpers: environment, words of a command line, child processes.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// Sets an environment variable for this process and its children; both texts
/// are copied, a null value counts as "". 0, or -1 for a name that is null,
/// empty or holds "=".
KAZ_API int TI_putenv(const char* name, const char* value);

/// Belongs to tools/app/editors.h, which says what it does. Declared here for
/// one more release.
KAZ_API const char* TI_cprogname(const char* editor);

/// Splits a command line into words as a POSIX shell reads them: blanks, tabs
/// and line ends separate; '...' is literal; in "..." a backslash escapes
/// `\`, `"`, `$`, a back quote and a line end (which then vanishes) and is
/// itself anywhere else; outside quotes it escapes any character, at the very end
/// it is itself. Nothing is expanded, and "#", "&", ";" and their kin are ordinary characters.
/// @param text the line; null counts as "".
/// @param argv becomes a null-terminated vector, vector and words in one block
/// that the caller releases with std::free; null on failure.
/// @return the number of words, or -1 for an unclosed quote.
KAZ_API int str_to_argv(const char* text, char*** argv);

/// The inverse: one line from which str_to_argv, or a POSIX shell, reads exactly
/// these words and runs the first one. Words that need it are put in quotes; so is
/// a first word that a shell would take for an assignment or a keyword. A null word
/// ends the vector early; a null @p argv gives "".
KAZ_API KazString argv_to_str(int argc, const char* const* argv);

/// Has the host's command interpreter run one command, waits for it, and shows
/// what it writes to standard output and error, line by line, between tty_start
/// and tty_end. A NUL character in the output shows as a blank. When the command ends,
/// what it and others have written by then is shown; what it left in the background is not
/// waited for. A command that begins with "-" or "+" is no option of the interpreter.
///
/// The streams of this process are flushed first, so that the command sees what was
/// written: all of stdio, and std::cout, std::cerr, std::clog and their wide kin, which
/// keep text of their own once they are not synchronised with stdio. Not other C++
/// streams.
/// @param command is for the interpreter to read; null counts as "".
/// @param signal when not null, becomes the number of the signal that ended it, else 0.
/// @return its exit status; -1 when it could not be started (the reason goes to
/// print_err) or was ended by a signal.
KAZ_API int shell_cmd(const char* command, int* signal = nullptr);

/// The same, but silent: what it writes becomes @p output, byte for byte. On a
/// failed start @p output is unchanged, errno is set and nothing is printed.
KAZ_API int shell_cmd_output(const char* command, KazString& output, int* signal = nullptr);
