// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a lock needs to know about threads: thisThread(), a number that no other
/// living thread has, even and never 0; and isOnlyThread(), true only while the
/// process has no thread but the calling one and cannot get one that this thread
/// does not start. False is always right.
#pragma once

#if defined(_WIN32)
#include "tools/platform/windows/threads.h"
#else
#include "tools/platform/posix/threads.h"
#endif
