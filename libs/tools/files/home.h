// SPDX-License-Identifier: Apache-2.0
/// @file
/// Where the user's files begin, and where the suite is installed.
///
/// Everything here may be used before main and in static destructors. Paths are
/// native text.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// The installation root: the directory that holds the "bin" directory (in
/// either case) above the library's own file, or the root of that path when
/// there is no such directory. Computed once; null, and tried again on the next
/// call, when the library's file cannot be told. Valid for the rest of the
/// process.
KAZ_API const char* TI_myRootDir();

/// The same as a string, "" for null.
KAZ_API KazString kazMoxRootDir();

/// The directory of the library's own file, without a trailing separator; empty
/// when that cannot be told.
KAZ_API KazString kazMoxBinDir();

/// Expands a leading "~" that stands alone or before a separator: the user's
/// home directory, a separator, and the rest. So "~" alone gives the directory
/// with a separator at its end. Any other path is returned unchanged, and so is
/// one for a user without a home directory; null gives "".
///
/// The home directory is "HOME" when that names an existing directory, without a
/// separator at its end. Else, on Windows, it is "Tarvo\Mox" below the user's
/// application data, or, where these are unknown, below "Application Data" of
/// "USERPROFILE": it is created where it is missing, and the second form of the
/// result stands in double quotes. Else, on POSIX, it is the directory in the
/// system's user database when that exists, and nothing is created.
///
/// The result of an expansion lives in one process-wide buffer that the next
/// expansion replaces; @p path may lie in that buffer.
KAZ_API const char* _TI_hm(const char* path);

/// A heap copy of `_TI_hm("~")`, which the caller frees.
KAZ_API const char* kazGetUserHomeDir();

/// Expands a leading "~" of the text in @p buffer in place when the result with
/// its terminator fits into @p size characters; else leaves it. Null is ignored.
KAZ_API void TI_userdir(char* buffer, int size);
