// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the command line asks of moxinfo.
#pragma once

#include <string>

/// Reads it. KazCommandLine::run, or the status to end with; what is wrong, words that do
/// not go together too, has been told.
int readOptions(int argc, char** argv);

/// Whether "--check" or "--origin" was given.
bool isAsked(const char* word);

/// The further file to read, under its full name; "" for none.
std::string furtherFile();
/// Where to write to; "" for standard output.
std::string outputFile();
/// What -source names, as the variables carry it; "" for everything.
std::string wantedSource();
/// False, and told, when -source names what gives nothing. The variables are read by then.
bool isSourceGood();
