// SPDX-License-Identifier: Apache-2.0
/// @file
/// Path algebra: taking paths apart and putting them together by text alone.
///
/// Paths are native text on every platform. A *separator* is the backslash or
/// "/"; what is built or normalised has backslashes only. The *root part*, the
/// *directory part* and the *last component* of a path:
///
/// | path                | root part       | directory part  | last component |
/// |---------------------|-----------------|-----------------|----------------|
/// | `C:\a\f.txt`        | `C:\`           | `C:\a\`         | `f.txt`        |
/// | `C:f.txt`           | `C:`            | `C:`            | `f.txt`        |
/// | `\a\b`              | `\`             | `\a\`           | `b`            |
/// | `\\srv\share\d\f`   | `\\srv\share\`  | `\\srv\share\d\`| `f`            |
/// | `\\srv\share`       | all of it       | empty           | all of it      |
/// | `dir/file`          | empty           | `dir/`          | `file`         |
/// | `file`              | empty           | empty           | `file`         |
///
/// Nothing here looks at the file system or at the user's home; kazpath.h does. A
/// null text counts as "". Results are strings of their own; an empty result is the
/// null string.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// Compares ignoring letter case and the kind of separator: 0 when equal, else
/// the difference of the first two characters that differ, as signed 8-bit
/// values after "/" was mapped to the backslash and others to lower case.
KAZ_API int kazFilenameCompare(const char* a, const char* b);

/// @p name below @p dir, with a separator between them only where both are
/// non-empty and @p dir does not end in one; an explicit @p name (see
/// kazIsExplicitPath) stands alone. The result is normalised.
KAZ_API KazString kazComposePath(const char* dir, const char* name);
/// kazComposePath(kazComposePath(a, b), c).
KAZ_API KazString kazComposePath(const char* a, const char* b, const char* c);

/// Characters in the root part: 1 for one leading separator; for two, up to and
/// including the one that ends the share name, or the whole text without it;
/// 2 for any character and ":", 3 when a separator follows; else 0.
KAZ_API int kazRootPartLength(const char* path);
/// Characters up to and including the last separator or ":"; 0 when there is
/// none or when that would be less than the root part.
KAZ_API int kazDirPartLength(const char* path);
/// The root part of @p path; "" for a relative one.
KAZ_API KazString kazPathRootPart(const char* path);
/// With its trailing separator.
KAZ_API KazString kazPathDirPart(const char* path);
/// What is behind the directory part.
KAZ_API KazString kazLastFileComponent(const char* path);

/// The path without one trailing separator; a root stays as it is.
KAZ_API KazString kazDirForDisplay(const char* path);

/// Starts with a separator, or with an ASCII letter and ":" ("C:file" counts).
KAZ_API bool kazIsAbsolutePath(const char* path);
/// Absolute, or ".", ".." or "~" alone or before a separator. An explicit path
/// is never searched for and never joined to a directory.
KAZ_API bool kazIsExplicitPath(const char* path);

/// In place: every "/" becomes a backslash. Null is left alone.
KAZ_API void kazNormalizePath(char* path);
/// A normalised copy.
KAZ_API KazString kazNormalizedPath(const char* path);
/// The same as kazNormalizePath.
KAZ_API void kazMakeNativePath(char* path);
/// In place: every backslash becomes "/". Null is left alone.
KAZ_API void kazMakeRightSlashPath(char* path);

/// @p path as seen from the directory that holds @p base (a file, or a directory
/// with a trailing separator), both normalised. @p path itself when one of them
/// is not absolute or the roots differ. The components are compared pairwise and
/// exactly; a later pair that happens to be equal counts even after a difference.
KAZ_API KazString kazRelativePath(KazString base, KazString path);

/// In place: bytes that are white space or not printable in the locale in force
/// become "_"; in the "C" locale that is everything beyond ASCII, too.
KAZ_API void kazRemoveBlanksFromPath(KazString& path);
