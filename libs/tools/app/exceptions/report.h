// SPDX-License-Identifier: Apache-2.0
/// @file
/// What everything, down to the plain functions, may call when something went
/// wrong. The messages room implements it; here stand only the declarations, so
/// that nobody who reports has to know how reports reach the user.
#pragma once

#include "tools/export.h"

#include <cstdarg>

/// Shows an error through the installed director; @p format is a printf format,
/// and text that comes from outside is an argument, never the format.
KAZ_API void print_err(const char* format, ...) KAZ_PRINTF(1, 2);
/// The same with the arguments as a list.
KAZ_API void vprint_err(const char* format, va_list args) KAZ_PRINTF(1, 0);

/// Reports a state that the library's own logic rules out: the fatal error
/// "Internal error #<code>". The code tells its developers where to look.
/// Returns only where the installed director's fatal error does.
KAZ_API void kazInternalError(unsigned int code);
