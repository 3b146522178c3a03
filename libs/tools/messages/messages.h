// SPDX-License-Identifier: Apache-2.0
/// @file
/// The IO director's operations as plain functions; see KazIODirector.h for
/// what they do. Formats are printf formats, and text that comes from outside
/// is an argument, never the format.
#pragma once

#include "tools/app/exceptions/report.h" // print_err, kazInternalError
#include "tools/export.h"

#include <cstdarg>

struct _gu_set_struct_;

/// @name Output of an external command
/// @{

/// Announces the start of @p command; the result names it in the other calls.
KAZ_API int tty_start(const char* command);
/// Says that the command has ended.
KAZ_API void tty_end(int ttyId);
/// Shows a piece of the command's output.
KAZ_API void tty_msg(int ttyId, const char* format, ...) KAZ_PRINTF(2, 3);
KAZ_API void vtty_msg(int ttyId, const char* format, va_list args) KAZ_PRINTF(2, 0);
/// @}

/// @name Messages
/// `print_msg`, `print_err`, `fatal_err` and `tty_msg` are the very functions
/// `KazIODirector::printMsg`, `printError`, `fatalError` and `ttyMsg`, under a
/// second name: their addresses compare equal.
/// @{

/// Shows a message, on the console as a line of standard output. (print_err, which shows an
/// error, is declared in tools/app/exceptions/report.h.)
KAZ_API void print_msg(const char* format, ...) KAZ_PRINTF(1, 2);
KAZ_API void vprint_msg(const char* format, va_list args) KAZ_PRINTF(1, 0);

/// Ends the process with status 1, unless the installed director's operation
/// returns.
KAZ_API void fatal_err(const char* format, ...) KAZ_PRINTF(1, 2);
KAZ_API void vfatal_err(const char* format, va_list args) KAZ_PRINTF(1, 0);
/// @}

/// @name Messages about symbols of a diagram
/// @{

/// @p symbols stays the caller's; null is passed on to the director.
KAZ_API void print_sym_msg(_gu_set_struct_* symbols, const char* format, ...) KAZ_PRINTF(2, 3);
KAZ_API void print_sym_err(_gu_set_struct_* symbols, const char* format, ...) KAZ_PRINTF(2, 3);

/// About one symbol. The set that the director receives is its own to keep: it
/// is not destroyed here.
KAZ_API void print_single_sym_msg(short symbol, const char* format, ...) KAZ_PRINTF(2, 3);
KAZ_API void print_single_sym_err(short symbol, const char* format, ...) KAZ_PRINTF(2, 3);
/// @}
