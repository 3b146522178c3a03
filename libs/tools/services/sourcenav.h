// SPDX-License-Identifier: Apache-2.0
/// @file
/// Shows a source line in the user's development environment.
///
/// Which one: the argument, else TI_EnvVcont("source_editor"), where a missing ToolInfo file is
/// no fatal error, else the first of the environment variables "VISUAL" and "EDITOR" whose program
/// is a preset's: the first preset in the order of names counts, with the program as the variable
/// names it where that is a path, and without its options, which may say the opposite of the
/// preset's. An *editor* is the name of a preset
/// or a template: words as str_to_argv() reads them, in which `${file}` (host spelling, absolute),
/// `${line}`, `${column}` (both from 1), `${dir}` and `${name}` (the file's directory without a
/// separator at its end, and its last component) are replaced, and any other `${x}` by
/// vstring_lookup_var("x"), "" when it is unknown. Words are split before anything is replaced and
/// no shell reads them: a file's name cannot add a word or a command. A template without `${file}`
/// gets the file as one more word. A first word "@terminal" means that the editor needs the
/// terminal: the call then waits for its end.
///
///     source_editor=clion
///     source_editor=@terminal nvim "+call cursor(${line},${column})" ${file}
#pragma once

#include "tools/containers/KazStringColl.h"
#include "tools/export.h"

/// An editor that is known by name. Static data.
struct kaz_source_preset {
    const char* name;    ///< in lower case
    const char* command; ///< a template
};

/// The presets, a row with null names behind the last. docs/guide-source-lines.md shows them.
KAZ_API const kaz_source_preset* kaz_source_presets();

/// The words of the command that shows a line; nothing is started. @p editor null: the
/// configured one, where a value "" counts as none. @p line and @p column below 1 count as 1. @p
/// words is replaced.
/// @return 1 for an editor that needs the terminal, 0 for another; -1, with @p words empty, when no
///         editor is configured, the template has an open quote or no words, or @p file is empty
///         or cannot be made absolute
KAZ_API int kaz_source_command(const char* editor, const char* file, int line, int column,
                               KazStringColl& words);

/// Shows the line: starts the command in the background, or waits for it in the terminal. False,
/// and reported through print_err, when there is no such file ("There is no file \"%s\"."), no
/// editor is configured ("No source editor is configured; set the variable source_editor."), the
/// template cannot be read ("The source editor \"%s\" cannot be read.") or it cannot be started
/// (KazCommand::getErrorText).
KAZ_API bool kazShowSource(const char* file, int line = 1, int column = 1);
