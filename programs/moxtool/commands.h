// SPDX-License-Identifier: Apache-2.0
/// @file
/// The commands of moxtool. Each gets a line that begins with its own word and
/// returns the exit status.
#pragma once

#include <array>

/// The programs of the suite.
inline constexpr std::array suitePrograms = {"moxcopy", "moxinfo", "moxmsg", "moxreport",
                                             "moxtool"};

/// Prints the script that makes a shell complete the command lines of programs.
int completionCommand(int argc, char** argv);

/// Says of everything that the suite needs whether it is as it should be.
int doctorCommand(int argc, char** argv);

/// Makes a project for a tool.
int newCommand(int argc, char** argv);

/// Runs recorded tools again and compares what they say.
int replayCommand(int argc, char** argv);

/// Runs a command with each of its allocations and file calls failing.
int sweepCommand(int argc, char** argv);
