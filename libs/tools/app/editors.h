// SPDX-License-Identifier: Apache-2.0
/// @file
/// The programs behind editors; see KazEditorsBase for the commands.
#pragma once

#include "tools/export.h"

/// The program name of an editor, without a directory: the last component of the
/// program in the command that creates the editor (KazEditorsBase). A command that
/// is the editor's name itself is taken whole, blanks included. Otherwise the
/// program is the command's first word; quotes of either kind keep blanks together,
/// and a backslash is a separator of a native path and escapes nothing. Null or an
/// empty name gives "". The result lives until the next call.
KAZ_API const char* TI_cprogname(const char* editor);
