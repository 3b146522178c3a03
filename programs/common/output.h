/// @file
/// Where results go.
#pragma once

#include <string>

/// Writes @p bytes to @p file, or to standard output when it is empty. A file is
/// written beside its place and then renamed, so that it appears whole or stays
/// as it was. False when that failed, which has then been said.
bool writeOutput(const std::string& file, const std::string& bytes);

/// Whether two names are those of one existing file.
bool isSameFile(const std::string& a, const std::string& b);
