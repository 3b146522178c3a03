// SPDX-License-Identifier: Apache-2.0
/// @file
/// Tools that are a step of another tool.
#pragma once

#include "tools/export.h"
#include "tools/messages/KazProgressHandle.h"

/// Runs another tool of the suite as a step of @p share percent of @p progress, so that
/// the user sees one progress.
///
/// @code
///   KazProgressHandle progress("Publishing", 2);
///   const char* const copy[] = {"moxcopy", "-projdir", dir, "-system", "plant", nullptr};
///   if (kazRunTool(progress, 80, copy) != 0)
///       print_err("nothing was copied");
///   progress.increment(20, false);
/// @endcode
///
/// The program is started with KazProgressHandle::asCmdLine()'s option behind its own words
/// (so these must not end their options by "--"), without an input: its questions get their
/// defaults. Until it ends, lines of its standard output are shown by tty_msg() (with the
/// number 0, and without tty_start()), lines of its standard error by print_err(), and its
/// outermost progress advances the step; the step is complete in the end, however that was,
/// also where a director throws: the child is then awaited, and the exception comes out.
/// On the console, which knows no steps, the child's percentages count as the whole's.
///
/// **In the child** nothing is to be done but to accept `arg_progress_channel`: a tool with
/// that option, whose environment variable "KAZ_PROGRESS_FD" names an open pipe above 2,
/// tells its outermost progress there, a line "CHANNEL PERCENT" for each tenth of a percent,
/// CHANNEL being the option's value, and shows it nowhere; the messages of that progress are
/// ordinary ones. With one of the two alone, or a bad value of either, it is a tool as ever.
/// Its own children attach to it in the same way.
///
/// **When the user wants to stop** and @p progress has a cancel handler, the child is asked
/// to end (SIGTERM; it is killed after five seconds), and awaited; then the handler runs and
/// the process ends with status 9, as KazProgressHandle::checkCancel() says.
///
/// @param progress advances; the step is one within the steps that are open
/// @param share percent, see KazProgressHandle::startSubProgress()
/// @param argv the program and its arguments, a null at the end; a program without a
///        separator in its name is looked for along the search path, else native text is
///        accepted. Copied; no shell reads them
/// @return its exit status; 128 and the signal that ended it; -1, after a message, when it
///         could not be started
KAZ_API int kazRunTool(KazProgressHandle& progress, double share, const char* const* argv);
