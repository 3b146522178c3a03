// SPDX-License-Identifier: Apache-2.0
/// @file
/// The start of a program.
#pragma once

#include "tools/platform/host_process.h"
#include "tools/platform/windows/outlet.h"

namespace kaz::host {

/// False with errno set when the program cannot be started. The pipes are opened as the launch
/// wants them; their writing ends are the caller's to close. One with a limit is suspended, as it
/// must be in its job before it can start anything that would be outside.
bool spawn(const Launch& launch, Outlets& outlets, PROCESS_INFORMATION& process);

} // namespace kaz::host
