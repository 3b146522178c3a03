// SPDX-License-Identifier: Apache-2.0
/// @file
/// Telling processes from one another for longer than they live.
#pragma once

#include <string>

namespace kaz::host {

/// Where process numbers are counted as they are for this process: the machine,
/// and what else divides its processes (on POSIX its start and the namespace).
/// Without blanks; empty when it cannot be told.
std::string processPlace();

/// When the process with this number was started, as a text without blanks that no
/// later process of the same number has; empty when no such process runs, "?" when
/// one runs but its start is hidden.
std::string processStart(int number);

} // namespace kaz::host
