// SPDX-License-Identifier: Apache-2.0
/// @file
/// Saying in a file who has made something, so that others can tell later whether
/// that process still runs.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// One line of printable characters, without its end, that tells this process from any
/// other: where process numbers are counted (on POSIX the running system and the
/// namespace, on Windows the machine), its number, and when it was started. "" where
/// the host does not tell.
KAZ_API KazString kazProcessStamp();

/// Does the process run whose stamp this is? 1 or 0, and -1 where that cannot be told
/// from here: a stamp of another machine or namespace, or a text that is none. Null
/// counts as "".
KAZ_API int kazIsRunning(const char* stamp);
