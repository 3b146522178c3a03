// SPDX-License-Identifier: Apache-2.0
/// @file
/// The vocabulary of command-line options that all tools of the suite share.
#pragma once

#include "tools/export.h"

/// One value for each option, named after its text; "-#" is arg_hash. The
/// value 46 belongs to no option. Lists of options that are handed to the
/// library end with arg_end.
enum arg_type_enum : int {
    arg_end = -1,
    arg_external = 0,
    arg_ignore = 1,
    arg_merge = 2,
    arg_noannot = 3,
    arg_nodiagram = 4,
    arg_noexternal = 5,
    arg_notable = 6,
    arg_overwrite = 7,
    arg_Command = 8,
    arg_commands_file = 9,
    arg_connect = 10,
    arg_session = 11,
    arg_hash = 12,
    arg_display = 13,
    arg_editor = 14,
    arg_x = 15,
    arg_Force = 16,
    arg_formats = 17,
    arg_gethandle = 18,
    arg_handle = 19,
    arg_Incldir = 20,
    arg_Interactive = 21,
    arg_nograph = 22,
    arg_output = 23,
    arg_enabled = 24,
    arg_orientation = 25,
    arg_path = 26,
    arg_printer = 27,
    arg_rules_print = 28,
    arg_print_setting = 29,
    arg_product = 30,
    arg_projdir = 31,
    arg_relaxed = 32,
    arg_traditional = 33,
    arg_Quiet = 34,
    arg_Revision = 35,
    arg_first = 36,
    arg_system = 37,
    arg_Type = 38,
    arg_target = 39,
    arg_toolinfo = 40,
    arg_trace = 41,
    arg_trace_file = 42,
    arg_transaction = 43,
    arg_replace = 44,
    arg_update = 45,
    arg_verbose = 47,
    arg_version = 48,
    arg_viewafter = 49,
    arg_srcdir = 50,
    arg_nostartup = 51,
    arg_forkedfromstartup = 52,
    arg_noclasscomments = 53,
    arg_nooperationbodies = 54,
    arg_batch = 55,
    arg_guid = 56,
    arg_port = 57,
    arg_host = 58,
    arg_context = 59,
    arg_show_system = 60,
    arg_from_cte = 61,
    arg_forward_messages = 62,
    arg_rman = 63,
    arg_server = 64,
    arg_file = 65,
    arg_pagewidth = 66,
    arg_pageheight = 67,
    arg_source = 68,
    arg_progress_channel = 69,
    arg_transient = 70,
    arg_filter = 71
};

/// One row of the option table. Rows are constant, live as long as the
/// library, and are searched in table order: the first row that an argument
/// matches wins, so the order is part of the vocabulary.
struct KAZ_API KazArgDescription {
    arg_type_enum type;      ///< The option; arg_end in the row that ends the table.
    const char* text;        ///< The full option with its leading "-"; case matters.
    int minLength;           ///< Shortest abbreviation in characters, the dash included.
    int valueCount;          ///< Arguments that one occurrence takes as its values: 0, 1 or 2.
    int repeatLimit;         ///< Occurrences allowed; 0 and 1 both mean one.
    bool isSwitch;           ///< On/off: the full text may carry a trailing "0" or "1".
    bool isGlobal;           ///< Belongs to the process: copied into a tool's own argument set.
    const char* defaultText; ///< Value of a switch that is given without a digit, or null.

    /// The first row of the table; the row after the last has type arg_end.
    static const KazArgDescription* table();

    /// The row of @p type, or null when the type has none.
    static const KazArgDescription* find(arg_type_enum type);

    /// The row that @p argument selects: its full option text or an
    /// abbreviation that is long enough, for a switch also the full text with
    /// one trailing "0" or "1". Null for an unknown option, for text that does
    /// not begin with "-", and for null.
    static const KazArgDescription* match(const char* argument);
};
