// SPDX-License-Identifier: Apache-2.0
/// @file
/// The tool environment: what project, system and diagram a tool works on, and
/// typed values for the shared command line options.
///
/// Each value of the table below has
/// - an identifier `kaz_env_id_NAME`,
/// - an accessor `kaz_env_NAME()`, and
/// - a setter `void kaz_env_NAME_asgn(const char* text)`.
///
/// A value comes from the first of these that has one:
/// 1. the setter; a value set to "" counts as set, a null text takes the tool's
///    own value back;
/// 2. the command line, when the table names an option for it (the current
///    argument set, first occurrence);
/// 3. `TI_EnvVcont(NAME)`: the environment variable "KAZ_<NAME>", then the
///    ToolInfo variable NAME;
/// 4. for the system directory only: the project directory (a leading "~"
///    expanded) joined with the system name, when neither is empty.
///
/// Otherwise it is unset. The sources are asked anew on each call, so a value
/// follows later assignments, parsing and configuration.
///
///     kaz_env_projdir_asgn("~\\work");
///     if (const char* system = kaz_env_system()) ...
///     int port = kaz_env_is_set(kaz_env_id_port) ? kaz_env_port() : 2100;
///
/// The kinds and what their accessors return:
/// - text: `const char*`, null when unset. The text belongs to the tools context
///   and stays valid until the value changes;
/// - integer: `int`; 0 when unset or when the text is no decimal number (a sign
///   is accepted) that fits;
/// - real: `double`; 0 when unset or when the text is no finite decimal number
///   (the point is ".", whatever the locale);
/// - boolean: `bool`; `TI_yesorno(text, false)`.
///
/// Whether a number is good, and in range, is told by typed_value.h.
///
/// All of it needs an application object: without one nothing can be assigned
/// and only source 3 is asked.
#pragma once

#include "tools/export.h"

/// The table, one row a value: kind, name, and the option (`arg_type_enum`) that
/// carries it on the command line, or `KAZ_ENV_NO_OPTION`. Options that may be
/// repeated have no single value, and those that ask for one action of this run
/// ("-version", "-replace", "-update", ...) are no setting; both stay with the
/// argument functions.
// clang-format off
#define KAZ_ENV_VALUES(ROW)                                 \
    ROW(text,    projdir,           arg_projdir)            \
    ROW(text,    system,            arg_system)             \
    ROW(text,    system_dir,        KAZ_ENV_NO_OPTION)      \
    ROW(text,    diagram,           KAZ_ENV_NO_OPTION)      \
    ROW(text,    revision,          arg_Revision)           \
    ROW(text,    product,           arg_product)            \
    ROW(text,    editor_name,       arg_editor)             \
    ROW(boolean, pdb_enabled,       KAZ_ENV_NO_OPTION)      \
    ROW(boolean, hash,              arg_hash)               \
    ROW(boolean, batch,             arg_batch)              \
    ROW(text,    commands_file,     arg_commands_file)      \
    ROW(text,    connect,           arg_connect)            \
    ROW(text,    context,           arg_context)            \
    ROW(text,    display,           arg_display)            \
    ROW(boolean, enabled,           arg_enabled)            \
    ROW(boolean, external,          arg_external)           \
    ROW(text,    file,              arg_file)               \
    ROW(text,    filter,            arg_filter)             \
    ROW(boolean, force,             arg_Force)              \
    ROW(text,    formats,           arg_formats)            \
    ROW(text,    forward_messages,  arg_forward_messages)   \
    ROW(integer, handle,            arg_handle)             \
    ROW(text,    host,              arg_host)               \
    ROW(boolean, ignore,            arg_ignore)             \
    ROW(boolean, interactive,       arg_Interactive)        \
    ROW(boolean, merge,             arg_merge)              \
    ROW(boolean, noannot,           arg_noannot)            \
    ROW(boolean, noclasscomments,   arg_noclasscomments)    \
    ROW(boolean, nodiagram,         arg_nodiagram)          \
    ROW(boolean, noexternal,        arg_noexternal)         \
    ROW(boolean, nograph,           arg_nograph)            \
    ROW(boolean, nooperationbodies, arg_nooperationbodies)  \
    ROW(boolean, notable,           arg_notable)            \
    ROW(text,    orientation,       arg_orientation)        \
    ROW(text,    output,            arg_output)             \
    ROW(boolean, overwrite,         arg_overwrite)          \
    ROW(real,    pageheight,        arg_pageheight)         \
    ROW(real,    pagewidth,         arg_pagewidth)          \
    ROW(boolean, path,              arg_path)               \
    ROW(integer, port,              arg_port)               \
    ROW(text,    print_setting,     arg_print_setting)      \
    ROW(text,    printer,           arg_printer)            \
    ROW(text,    progress_channel,  arg_progress_channel)   \
    ROW(boolean, quiet,             arg_Quiet)              \
    ROW(boolean, relaxed,           arg_relaxed)            \
    ROW(text,    rman,              arg_rman)               \
    ROW(text,    rules_print,       arg_rules_print)        \
    ROW(text,    server,            arg_server)             \
    ROW(text,    session,           arg_session)            \
    ROW(text,    source,            arg_source)             \
    ROW(text,    srcdir,            arg_srcdir)             \
    ROW(text,    target,            arg_target)             \
    ROW(text,    toolinfo,          arg_toolinfo)           \
    ROW(text,    trace_file,        arg_trace_file)         \
    ROW(boolean, traditional,       arg_traditional)        \
    ROW(boolean, transaction,       arg_transaction)        \
    ROW(text,    type,              arg_Type)               \
    ROW(boolean, verbose,           arg_verbose)
// clang-format on

/// Identifiers of the values; they index the cells of the tools context.
enum kaz_env_id_enum {
/// @cond what makes declarations of the table
#define KAZ_ENV_ID(kind, name, option) kaz_env_id_##name,
    KAZ_ENV_VALUES(KAZ_ENV_ID)
#undef KAZ_ENV_ID
    /// @endcond
};

/// How many values there are.
inline constexpr int kaz_env_id_count = 0
/// @cond
#define KAZ_ENV_ONE(kind, name, option) +1
    KAZ_ENV_VALUES(KAZ_ENV_ONE)
#undef KAZ_ENV_ONE
    /// @endcond
    ;
static_assert(kaz_env_id_count == 58);

/// What an accessor makes of the text.
enum kaz_env_kind_enum {
    kaz_env_kind_text,
    kaz_env_kind_integer,
    kaz_env_kind_real,
    kaz_env_kind_boolean,
};

/// @cond
#define KAZ_ENV_RESULT_text const char*
#define KAZ_ENV_RESULT_integer int
#define KAZ_ENV_RESULT_real double
#define KAZ_ENV_RESULT_boolean bool

#define KAZ_ENV_DECLARE(kind, name, option)                                                        \
    KAZ_API KAZ_ENV_RESULT_##kind kaz_env_##name();                                                \
    KAZ_API void kaz_env_##name##_asgn(const char* text);
KAZ_ENV_VALUES(KAZ_ENV_DECLARE)
#undef KAZ_ENV_DECLARE
/// @endcond

/// The name of a value as the accessors and the configuration spell it; null for an
/// identifier out of range.
KAZ_API const char* kaz_env_name(kaz_env_id_enum id);
/// Its kind; text for an identifier out of range.
KAZ_API kaz_env_kind_enum kaz_env_kind(kaz_env_id_enum id);

/// The text of any value, whatever its kind; null when it is unset or @p id is
/// out of range. Lifetime as above.
KAZ_API const char* kaz_env_text(kaz_env_id_enum id);

/// True when one of the sources has the value, be it empty.
KAZ_API bool kaz_env_is_set(kaz_env_id_enum id);

/// The setter for any value; an identifier out of range is ignored.
KAZ_API void kaz_env_asgn(kaz_env_id_enum id, const char* text);
