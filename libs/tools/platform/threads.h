// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a lock needs to know about threads: thisThread(), a number that no other
/// living thread has, even and never 0; isOnlyThread(), true only while the
/// process has no thread but the calling one and cannot get one that this thread
/// does not start (false is always right); waitWhile(word, value), which sleeps while
/// the word has that value and may come back early; and wakeOne(word), which wakes one
/// who sleeps so.
#pragma once

#if defined(_WIN32)
#include "tools/platform/windows/threads.h"
#else
#include "tools/platform/posix/threads.h"
#endif
