// SPDX-License-Identifier: Apache-2.0
/// @file
/// Paths as the host and the user's home mean them. What can be said of a path by
/// its text alone is in path_text.h, which comes with this header and explains the
/// terms.
///
/// A null text counts as "".
#pragma once

#include "tools/export.h"
#include "tools/files/path_text.h"
#include "tools/strings/KazString.h"

/// The absolute form: a leading "~" is the home directory, a relative path
/// starts at the current directory, "." and ".." are folded. When the host has
/// no answer (a drive's own current directory on a host without drives, a
/// result beyond the host's limit), @p path as it is. Need not exist.
KAZ_API KazString kazFullPath(const char* path);

/// 1 when both name the same directory, else 0. Texts that are equal, ignoring
/// case, runs of backslashes (but for a leading pair) and one trailing backslash,
/// are the same; "/" is no backslash here. Others are probed: a file
/// "_tmp<process id>" is written in @p a, looked for in @p b and deleted; 0 when
/// @p a cannot be written to. One that is there already is only looked at. Nothing
/// is waited for: a pipe of that name in @p b counts as a file that can be read.
KAZ_API int kazSamePathName(KazString a, KazString b);

/// Writes the full path of @p name below @p dir to @p out; in spite of the name
/// with native separators. A null @p dir leaves @p name, a null @p name leaves
/// @p dir, both as they are. @p out must hold the longest path of the host
/// (PATH_MAX, 4096 on Linux) and the texts joined; it may be one of them.
KAZ_API void make_unix_path(const char* dir, const char* name, char* out);
/// The same for @p dir below @p base; without a base make_unix_path(dir, name).
KAZ_API void make_unix_path_rel(const char* dir, const char* name, const char* base, char* out);
