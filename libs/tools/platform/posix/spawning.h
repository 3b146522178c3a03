// SPDX-License-Identifier: Apache-2.0
/// @file
/// The start of a program.
#pragma once

#include "tools/platform/host_process.h"
#include "tools/platform/posix/outlet.h"

#include <sys/types.h>

namespace kaz::host {

/// Why the child was not started, or 0.
/// Its input is closed here on return; the writing ends of the pipes, which are opened as the
/// launch wants them, are the caller's to close.
int spawn(const Launch& launch, Outlets& outlets, pid_t& id);

} // namespace kaz::host
