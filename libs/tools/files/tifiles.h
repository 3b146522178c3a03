// SPDX-License-Identifier: Apache-2.0
/// @file
/// File helpers. Paths are native text (see kazpath.h); the host's own spelling
/// is accepted wherever it holds no backslash. A drive letter or a leading pair
/// of separators names nothing on a host without drives and shares: no such
/// file. A null path counts as "". Functions that return int give 0, or -1 with
/// errno set, unless they say otherwise; nothing here prints.
#pragma once

#include "tools/containers/KazStringColl.h"
#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <cstddef>
#include <cstdio>

/// The path in the spelling that the host's own calls and programs expect
/// ("\tmp\x" is "/tmp/x"); empty for text that names nothing here.
KAZ_API KazString kazHostPath(const char* native);
/// A path of the host as native text. A backslash inside a host name cannot be
/// expressed and reads as a separator.
KAZ_API KazString kazNativePath(const char* host);

/// Joins @p dir and @p name plainly, with a separator between them where both
/// are non-empty and @p dir does not end in one, and normalises. @p name is
/// never taken as explicit. Writes to @p out, which may be @p dir or @p name.
/// @return @p out, or null when text and terminator exceed @p size characters;
/// @p out is unchanged then.
KAZ_API char* TI_catfile(const char* dir, const char* name, char* out, int size);

/// Creates a directory with its missing parents, mode 0777 cut by the mask. One
/// that exists is success, an empty name or a file in the way is failure.
KAZ_API int TI_makedir(const char* dir);
/// The same, but a name that does not fit @p limit characters, terminator
/// included, fails with ENAMETOOLONG and nothing is created.
KAZ_API int TI_makedir(const char* dir, int limit);
/// Creates one directory; @p mode is cut by the file-creation mask. Fails with
/// EEXIST when the name is taken.
KAZ_API int TI_mkdir(const char* dir, int mode);

/// fopen by either spelling; "x" in @p mode, which wants a new file, works on every
/// host. The caller closes.
KAZ_API FILE* TI_fopen(const char* path, const char* mode);

/// Is @p stream a terminal, which obeys what it is told to show? What comes from outside
/// is shown there through kazPrintable(). False for null.
KAZ_API bool TI_isTerminal(FILE* stream);

/// Is there a directory of this very name? A link to one is none.
KAZ_API bool TI_isRealDirectory(const char* path);

/// Appends to @p entries the full path of every entry that matches, in the order
/// of the host, each once, "." and ".." included where they match. @p pattern is
/// a directory and, behind its last separator, a wildcard in which "*" and "?"
/// are special ("*.*" means "*"). Directory and name are joined plainly, so that
/// an entry called "~" or "c:x" stays inside the directory. A host name with a
/// backslash in it cannot be expressed and is left out.
/// @return how many were appended; 0 when the directory cannot be listed to its end.
KAZ_API int read_a_dir(const char* pattern, KazStringColl& entries);

/// Copies one regular file. The target appears whole or not at all: an existing
/// one is replaced in one step, and stays as it was when the copy fails. The
/// permission bits are kept, the modification time is now. Links at @p source
/// are followed, a link at @p target is replaced. Fails for a directory, for a
/// special file (which is never opened), and for a file onto itself.
/// @param source native path
/// @param target native path
/// @param keepExisting an existing target is a failure (EEXIST).
KAZ_API int copy_file(const char* source, const char* target, bool keepExisting);

/// Makes @p size bytes the contents of a file: whole or as before, also when the process
/// is killed. It is written beside its place, for the user alone until it is complete, and
/// renamed. A file that is replaced hands on its nine permission bits, a link is followed,
/// a device or a pipe is written to as it stands. Fails with EISDIR for a directory.
KAZ_API int TI_writefile(const char* path, const void* data, std::size_t size);

/// Creates a new empty file that nobody else had, readable and writable by the
/// user alone, and opens it for update in binary. It stays until it is deleted
/// (see KazApp::removeAtExit).
/// @param dir where; null or "" for the host's place for temporary files.
/// @param prefix how the name begins; separators and ":" in it become "_".
/// @param path becomes the native path; unchanged on failure.
/// @return the stream, which the caller closes; null with errno set on failure.
KAZ_API FILE* TI_tmpfile(const char* dir, const char* prefix, KazString& path);
/// Creates such a file and closes it again: its native path, "" on failure.
KAZ_API KazString TI_tmpname(const char* dir, const char* prefix);
/// Creates such a directory: its native path, "" on failure.
KAZ_API KazString TI_tmpdir(const char* dir, const char* prefix);
