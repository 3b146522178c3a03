// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a path stands for; removing and renaming it. Paths are native text, as in
/// tifiles.h; a null path counts as "". The last component is taken in its directory,
/// which is open meanwhile, and no link is followed at it unless that is said. Trailing
/// separators do not count. Functions that return int give 0, or -1 with errno set;
/// nothing here prints. A path that ends in "." or ".." can be asked about, but neither
/// removed nor renamed (EINVAL).
#pragma once

#include "tools/export.h"
#include "tools/files/KazDirectory.h"
#include "tools/strings/KazString.h"

/// Looks at what the path names; at a link itself unless @p followLinks. On failure
/// @p status is a default one.
KAZ_API int TI_status(const char* path, KazFileStatus& status, bool followLinks = true);

/// Is there anything of this name, be it a link that leads nowhere? False also where
/// that cannot be told.
KAZ_API bool TI_exists(const char* path);
/// Is there a directory, or a regular file, links followed? See also TI_isRealDirectory.
KAZ_API bool TI_isDirectory(const char* path);
KAZ_API bool TI_isFile(const char* path);

/// May this user use what the path names, links followed? @p mode adds up 4 to read, 2 to
/// write, 1 to execute or, in a directory, to reach what is in it; 0 asks for nothing more
/// than that it is there. Nothing is tried: a file system that is full says yes.
KAZ_API int TI_access(const char* path, int mode);

/// Removes a file, or a link itself. A directory is a failure (EISDIR or EPERM).
KAZ_API int TI_remove(const char* path);
/// Removes an empty directory; a link to one is a failure (ENOTDIR).
KAZ_API int TI_rmdir(const char* path);
/// Removes whatever has this name, a directory with all that is in it, however deep;
/// links are removed, never followed. Goes on after a failure; the result is that of the
/// first. @p failed, where given, becomes the path of what could not be removed first.
KAZ_API int TI_rmtree(const char* path, KazString* failed = nullptr);

/// Gives what @p from names the name @p to, in one step. What is there is replaced (a
/// directory only by a directory, and only an empty one; a link itself) or, unless
/// @p mayReplace, a failure (EEXIST). EXDEV between file systems.
KAZ_API int TI_rename(const char* from, const char* to, bool mayReplace);
