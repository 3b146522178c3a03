// SPDX-License-Identifier: Apache-2.0
/// @file
/// Command-line arguments: parsing into the current set and asking it, and
/// helpers for tools that prepare argv before it is parsed.
///
/// The current set is the tools context's own one when the application has an
/// active context and that set exists, else the application's. Texts that are
/// handed out belong to the set and live as long as it does.
#pragma once

#include "tools/app/KazArgDescription.h"
#include "tools/export.h"
#include "tools/strings/KazString.h"

/// Parses as KazParsedArgs::parse does, into the application's set; with
/// @p ownArgs into the tools context's own set, which is made if it is missing
/// and on each such call gets the process-wide options of the application's set
/// appended first, so that one of them on this line counts as repeated. False
/// when there is no application object or, with @p ownArgs, no tools context.
/// A line that is accepted and holds "-trace" or "-trace_file" is traced from here
/// on as trace.h says.
KAZ_API bool kaz_arg_parse(int argc, char** argv, const arg_type_enum* required,
                           const arg_type_enum* optional, int minUntagged, bool ownArgs);

/// KazParsedArgs::getArgText on the current set.
KAZ_API const char* kaz_arg_text(arg_type_enum type, int index, const char** defaultText);

/// The same with a default that needs no variable: the value at @p index, or
/// @p defaultText, which may be null, when there is none.
///
///     const char* format = kaz_arg_text_or(arg_formats, "text");
KAZ_API const char* kaz_arg_text_or(arg_type_enum type, const char* defaultText, int index = 0);

/// KazParsedArgs::getRepeatingText on the current set.
KAZ_API const char* kaz_arg_repeating_text(arg_type_enum type, int occurrence, int item,
                                           const char** defaultText);

/// KazParsedArgs::getUntagged on the current set.
KAZ_API const char* kaz_arg_get_untagged(int index);

/// How many plain arguments the current set has; 0 without one.
KAZ_API int kaz_arg_untagged_count();

/// True when the option may be given more than once; false without a row.
KAZ_API bool kaz_arg_is_repeating(arg_type_enum type);

/// @p text as one word that any command line carries: "0x" and two upper-case
/// hexadecimal digits for each byte. "-Command" decodes its values from it.
/// Null counts as "".
KAZ_API KazString kaz_arg_text_encode(const char* text);

/// True when @p text is non-empty and holds decimal digits only (no sign).
/// Null counts as "".
KAZ_API bool text_is_integer(const char* text);

/// True when @p text holds only decimal digits and points, any number of them;
/// also for an empty text. Null counts as "".
KAZ_API bool text_is_float(const char* text);

/// Removes the null entries among the first @p *argc, keeps the order of the
/// others, writes a null behind the last one kept and lowers @p *argc. With
/// @p *argc below 1 only argv[0] is set to null. @p argv has room for one entry
/// more than the number kept; when nothing is removed that is the entry at
/// *argc, the null that ends every argv.
KAZ_API void arg_shift_argv(int* argc, char** argv);

/// Copies @p argc and @p argv to the outputs that are not null. Expands nothing.
KAZ_API void argv_to_glob(int argc, char** argv, int* outArgc, char*** outArgv);

/// Takes "-editor NAME" out of @p argv: the option may be abbreviated to two
/// characters and is matched without regard to case in its first seven.
/// Stores the name (the caller's argv text) in @p *editor and closes the gap.
/// With @p renameArgv0 not 0, argv[0] becomes the program name of that editor
/// in the directory that argv[0] names, if any; the new text is a heap copy
/// that belongs to the caller. A path that does not fit 512 characters leaves
/// argv[0] unchanged.
/// @return 1 when an editor was found, else 0 with nothing changed.
KAZ_API int get_editor_from_argv(int* argc, char** argv, char** editor, int renameArgv0);
