// SPDX-License-Identifier: Apache-2.0
/// @file
/// ToolInfo variables: the suite's configuration.
///
/// A ToolInfo file is a text of `name=value` lines. A line that begins with "%"
/// or "." is a comment; blanks, tabs and carriage returns at the end of a line and
/// blanks around name and value do not count; a line without "=" or without a name is
/// skipped. Names are case-sensitive. A line of more than 5120 characters continues
/// as the next line, and a NUL byte ends its line. A file may name a further one in
/// the variable "ToolInfo", up to ten files in all. A directory, a pipe or a device
/// counts as a file that is not there, and so does one that cannot be read to its end.
///
/// In the first file the last definition of a name wins; over all files the
/// first file that defines it wins. An empty value is a definition (later files
/// cannot replace it) that reads as undefined.
///
///     if (const char* dir = TI_Vcont("tmp_dir")) ...
///     bool colour = TI_yesorno(TI_EnvVcont("colour"), true);
///
/// The files are read once, on the first lookup. A tool cannot run without a
/// ToolInfo file: when none is found, a fatal error says so. With an IO director
/// whose fatal error returns, the table is then empty and everything here works
/// on.
///
/// TI_Var, TI_Vasg and TI_V_user_file do not read the files. What TI_Var and
/// TI_V_user_file define before the first lookup is replaced by the first file
/// and stays against the others of the chain.
///
/// Everything here may be used before main and in static destructors. Paths are
/// native text. Names and texts given as null count as "" unless said otherwise.
#pragma once

#include "tools/export.h"
#include "tools/files/home.h"
#include "tools/strings/KazString.h"

#include <cstdio>
#include <ctime>

/// Reads the files: the first one, then the chain. Returns 0. Only the first
/// call does anything. Costs time in proportion to the size of the files, in
/// whatever order the definitions stand.
KAZ_API int TI_Vinit();

/// The value of a variable: the run-time assignment (TI_Vasg) when there is one,
/// else the definition of the files. Null when it is undefined or empty, or when
/// @p name is null. Valid until the variable changes.
KAZ_API const char* TI_Vcont(const char* name);

/// The environment variable "KAZ_" and @p name in upper case when it is set, even
/// to ""; otherwise TI_Vcont(name). Null for a null @p name. A value from the
/// environment is valid until that variable changes.
KAZ_API const char* TI_EnvVcont(const char* name);

/// The environment variable of exactly that name when it is set; otherwise
/// TI_Vcont(name). Null for a null @p name.
KAZ_API const char* TI_SameEnvVcont(const char* name);

/// Defines a variable in the files' table from one line of file syntax, under
/// the overwrite flag. Returns 0 also when an earlier definition stays; -1 for a
/// null line, a comment, a line without "=" and an empty name.
KAZ_API int TI_Var(const char* line);

/// Assigns a variable at run time, in front of what the files say; @p value
/// beginning with "~" is expanded by _TI_hm, an empty or null one hides the files'
/// definition. Without the overwrite flag a variable that the files' table has by
/// now, or that is assigned already, stays. Returns 0, or -1 when nothing was assigned:
/// also for a null @p name and without an application that has an active context.
KAZ_API int TI_Vasg(const char* name, const char* value);

/// Reads one more file into the files' table. With @p overwrite its definitions
/// replace earlier ones and the last one of a name wins; without it, earlier ones
/// stay and the first one wins. "ToolInfo" in it leads to no further file, once the
/// files are read. Returns 0, or -1 for a null path and for a file that cannot be
/// read. The overwrite flag is what it was, and the table is unchanged when memory
/// runs out.
KAZ_API int TI_V_user_file(const char* path, bool overwrite);

/// Sets the overwrite flag (true at start): whether a new definition replaces an
/// earlier one of the same name. Returns the previous value.
KAZ_API bool TI_V_set_overwrite(bool overwrite);

/// What a text says as a yes or no; @p defaultValue for a null or empty text and
/// for anything that is neither. Leading blanks, tabs and line ends do not count.
/// Yes: begins with 1, Y, T or J (German "ja"), or is ON; no: begins with 0, N or F,
/// or is OFF; in either case of letters.
KAZ_API bool TI_yesorno(const char* text, bool defaultValue);

/// TI_yesorno with the default true.
KAZ_API bool TI_yes(const char* text);

/// TI_yesorno with the default false. Note that "yes" gives true here too.
KAZ_API bool TI_no(const char* text);

/// Opens the ToolInfo file for reading and remembers its name; the caller closes
/// the stream, whose reading never waits. Only a regular file, links followed,
/// is one. Tried in order: the name remembered from an earlier search; then,
/// when the environment variable "ToolInfo", or else "TOOLINFO", is set, only the
/// file named there (a name that is not explicit lies below the installation
/// root); otherwise "~\ToolInfo", and "ToolInfo.W32NTX86" and "ToolInfo" in the
/// installation root. Null when none opens.
KAZ_API std::FILE* _TI_Cfile();

/// Copies the remembered name of the ToolInfo file to @p out, which has room for
/// the platform's longest path with its terminator (a longer name is cut).
/// Returns 0, or -1 when no name is remembered or @p out is null.
KAZ_API int TI_Name(char* out);

/// Records the modification time of the file of the remembered name.
KAZ_API void TI_Vr_done();

/// The time that TI_Vr_done recorded last; 0 when there was no such file.
KAZ_API std::time_t TI_Vr_time();

/// Where the definition in force of a variable comes from.
enum KazVariableSource {
    KazUndefined,   ///< Nowhere.
    KazEnvironment, ///< The environment variable "KAZ_<NAME>".
    KazRunTime,     ///< An assignment with TI_Vasg.
    KazDefined,     ///< The library itself or TI_Var, thus no file.
    KazFile,        ///< A file.
};

/// Where the answer of TI_EnvVcont(name) comes from; a definition with an empty
/// value counts. @p file (may be null) receives the name of the file for KazFile
/// and becomes empty otherwise. Reads the files if that has not happened yet.
KAZ_API KazVariableSource TI_EnvVsource(const char* name, KazString* file);

/// Where the answer of TI_Vcont(name) comes from, in the same way: what an environment
/// variable may hide. Never KazEnvironment.
KAZ_API KazVariableSource TI_Vsource(const char* name, KazString* file);

/// The name of a file of the chain, 0 for the first one; empty past the end.
/// Unlike the variable "ToolInfoPath" this tells names with blanks apart. Reads
/// the files if that has not happened yet.
KAZ_API KazString TI_Vfile(int index);

/// Calls @p visit with the name of each variable that has a definition or a
/// run-time assignment, an empty one included, in byte order of the names, each
/// once, with @p data handed through. @p visit may define and assign variables;
/// names that come new meanwhile are not visited. Does nothing for a null
/// @p visit. Reads the files if that has not happened yet.
KAZ_API void TI_Vwalk(void (*visit)(const char* name, void* data), void* data);
