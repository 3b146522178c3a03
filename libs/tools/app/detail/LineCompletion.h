// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a word of a command line that is being typed may become.
#pragma once

#include "tools/app/KazCommandLine.h"

#include <string>
#include <vector>

namespace kaz::detail {

/// The candidates for the word at @p number (from 0) of @p words, "WORD<TAB>HELP" each,
/// or ":file" or ":directory" where the shell knows better; in the order in which they
/// are to be shown. A word that is not there is empty. @p completer may be null.
std::vector<std::string> completionsOf(const KazCommandLine::Description& description,
                                       KazCommandLine::Completer completer, std::size_t number,
                                       const std::vector<std::string>& words);

} // namespace kaz::detail
