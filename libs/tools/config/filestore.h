// SPDX-License-Identifier: Apache-2.0
/// @file
/// Filestore names: where the current project, system and diagram live.
///
/// A project directory holds a directory for each system, and that holds a
/// filestore directory with the diagram files. Which project, system and diagram
/// are current comes from the tool environment (kazenv.h), the name of the
/// filestore directory and the database state from the tools context.
///
/// Names are limited to 139 characters (140 with the terminator), those of system
/// files and diagram files to 140. A function that returns a `char*` returns a
/// process-wide buffer of its own that its next call overwrites. Nothing here
/// throws except when memory runs out.
///
/// Paths are native text. A `char*` argument that is changed in place must have
/// room for the stated number of characters.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <cstdio>

/// The longest file or directory name with its terminator.
inline constexpr int kazFilestoreNameSize = 140;

/// @name Database state of the tools context
/// Without an application object it reads as 0 and false and cannot be set.
/// @{

/// 1 when the project database is open, 0 when not.
KAZ_API int kazGetDbOpen();
/// Says so; opens nothing.
KAZ_API void kazSetDbOpen(int state);
/// Whether directories and files of the database may only be read.
KAZ_API bool kazIsDbReadonly();
/// Says so; changes no permissions.
KAZ_API void kazSetDbReadonly(bool readonly);
/// @}

/// Sets the name of the filestore directory inside a system ("" for none); nothing
/// without an application object.
KAZ_API void kaz_fs_filestore_dir_asgn(const KazString& dir);

/// Project directory, system and filestore directory joined; a part that would
/// not fit, or that is empty, is left out. Makes the directories on the way.
KAZ_API char* kaz_fs_filestore_path();

/// Appends @p sub, which may be part of @p dir, to the directory name in @p dir and
/// makes that directory with its parents; "~" at the start is expanded. @p end points
/// behind the room for the name; with a null @p end the room is the length of @p dir,
/// so that only an empty @p sub fits. An empty @p sub keeps @p dir.
///
/// Returns 0 when the result is a directory that can be read and searched, and
/// written too unless the database is read-only (an empty name passes); 1 when
/// not, or for a null @p dir; 2 when the result does not fit: @p dir then still
/// holds the directory it started from, expanded if that fits.
KAZ_API int kaz_fs_cat_dir(char* dir, const char* end, const char* sub);

/// The file-creation mask that the file @p path stands for: its nine permission
/// bits exclusive-or 0666. A leading "~" is the home directory. The process's mask
/// when @p path cannot be examined.
KAZ_API unsigned long kaz_fs_file_umask(const char* path);

/// The mask of the file ".sys_file_mode" in the system directory: by its own
/// permissions it says which ones new files of the system get.
KAZ_API unsigned long kaz_fs_system_umask();

/// Opens a file under the mask of kaz_fs_system_umask; a leading "~" in @p path is
/// the home directory, as in a system directory. The process's mask is then what it
/// was. The caller closes; null, with errno set, when it does not open.
KAZ_API std::FILE* kaz_fs_system_umask_fopen(const char* path, const char* mode);

/// Opens the file @p name of the system directory, or of the filestore directory
/// inside it, under the mask of kaz_fs_system_umask; the caller closes. Null without
/// a project directory, a system or a name, for a path of more than 140 characters,
/// and when it does not open. Only the last leaves its errno and is reported, with
/// the name, the revision and at most 30 characters of the platform's text for the
/// error: on the error channel by a console application, on the message channel by
/// a graphical one.
KAZ_API std::FILE* kaz_fs_open_sys_file(char* name, char* mode);
KAZ_API std::FILE* kaz_fs_open_filestore_file(char* name, char* mode);

/// The directory of the current system, made when missing. One that does not fit
/// is reported on the error channel and cut.
KAZ_API char* edit_get_sys_dir();

/// The characters that a diagram name cannot have: the ToolInfo variable
/// "illegal_diag_chars", else a default. Read once; valid to the end.
KAZ_API const char* kaz_illegal_diag_chars();

/// Their replacements, by position: "replace_diag_chars", else underscores. Read
/// once; valid to the end.
KAZ_API const char* kaz_replace_diag_chars();

/// Copies @p src (null counts as "") with its terminator to @p dst, which has
/// room for it and may be the same (null: nothing happens); each illegal character
/// becomes its replacement, or "_" where there are fewer replacements.
KAZ_API void kaz_diag_strcpy(char* dst, const char* src);

/// Expands a leading "~" in @p dir (room for 140 characters) and makes the
/// directory with its parents; none where the expansion has no room. Returns 0,
/// also when it could not be made; -1 for a null or empty name.
KAZ_API int edit_make_dir_name(char* dir);

/// Assigns the directory where diagrams are kept now to the ToolInfo variable
/// "filestore" when it differs from the one assigned last: with the database open
/// (state 1) the filestore directory of the system, when that is usable; else the
/// system directory. Returns 0.
KAZ_API int edit_set_store_dir();

/// Replaces @p dir by its full path and makes that directory with its parents. @p dir
/// has room for 140 characters; where the full path does not fit, the directory is
/// made but @p dir stays as it is. Null and "" are ignored.
KAZ_API void kaz_fs_make_absolute_dir(char* dir);

/// What edit_name_is_legal checks, to be combined.
enum edit_name_check_enum {
    edit_check_diagram = 1,  ///< A diagram name is there; it is cleaned (see below).
    edit_check_system = 2,   ///< A system name is there.
    edit_check_projdir = 4,  ///< A project directory is set; with the project database, not "".
    edit_check_wildcard = 8, ///< The diagram name is no wildcard pattern.
};

/// Makes the checks of @p checks in the order of their bits. Returns 1 when all
/// pass, 0 at the first that fails; with @p report its message goes to the error
/// channel. The check of the diagram name turns characters that file names cannot
/// have, and a leading minus sign, into "_" and makes the result the current
/// diagram name.
KAZ_API int edit_name_is_legal(int checks, int report);

/// The file name of the current diagram: system directory ("~" expanded), filestore
/// directory, and the diagram name (with kaz_diag_strcpy's replacements), a "." and the
/// revision when there is one; "" without a diagram name. Makes nothing.
///
/// A revision that is empty or of more than 71 characters is reported and cut to
/// what fits; a name of more than 140 characters is reported and cut. When the
/// environment variable "edit_debug_diag_rev" is set, the revision in use is
/// traced on standard error.
KAZ_API char* edit_make_name();
