// SPDX-License-Identifier: Apache-2.0
/// @file
/// The commands of moxtool. Each gets a line that begins with its own word and
/// returns the exit status.
#pragma once

/// Prints the script that makes a shell complete the command lines of programs.
int completionCommand(int argc, char** argv);
