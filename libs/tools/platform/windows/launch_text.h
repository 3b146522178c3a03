// SPDX-License-Identifier: Apache-2.0
/// @file
/// The texts that a start takes: program file, command line and environment.
#pragma once

#include "tools/platform/host_process.h"

#include <string>

namespace kaz::host {

/// The file of a program: found along the search path when the name holds no separator,
/// with ".exe" behind it where that is missing. Empty with errno set: ENOENT for none,
/// ENOEXEC for a batch file, as the interpreter would read its arguments.
std::wstring programFile(const std::string& name);

/// This process's variables with the changes of a launch, as a block; empty when there
/// are none.
std::wstring environmentBlock(const Launch& launch);

} // namespace kaz::host
