// SPDX-License-Identifier: Apache-2.0
/// @file
/// What differs between the hosts that tests run on and matters to what they
/// expect. What a host does not have at all is tested in files of the other
/// host only, in the folders posix/ and windows/.
#pragma once

#include <string>

namespace kit {

/// Is native text the host's own spelling, with drives and backslashes?
extern const bool hasDrives;

/// What an absolute path without a drive gets in front here: "C:", or "". Wine
/// takes one that begins with "/" for a path of the host below it.
std::string currentDrive(char separator = '\\');

/// Can a file have this name here?
bool isFileName(const std::string& name);

/// The name of the locale of a program that is started with LC_ALL=C. Not every
/// host looks at that variable.
std::string localeOfC();

/// Does printf refuse a field of ten digits? Where it does not, it runs out of stack.
bool refusesWideFields();

/// A file that takes no data because its disk is full; "" where there is none.
std::string fullDevice();

/// Puts a program of the build, and the library that it needs, into a directory.
/// Returns the program's path there.
std::string placeProgram(const std::string& name, const std::string& directory);

} // namespace kit
