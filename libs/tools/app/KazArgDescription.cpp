// SPDX-License-Identifier: Apache-2.0
#include "tools/app/KazArgDescription.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace {

constexpr bool yes = true;
constexpr bool no = false;

/// All options of the suite. The order decides which option an abbreviation
/// means, and with it what existing scripts do: add new rows at the end.
///
/// Columns: option, full text, shortest abbreviation (dash included), values
/// taken, occurrences allowed (0 and 1: one), switch, process-wide, value of a
/// switch without a digit. Some options that are no switches carry a default
/// text too; it tells tools what they may assume and is never stored.
// clang-format off
constexpr KazArgDescription rows[] = {
    {arg_hash,               "-#",                  2,  0, 0,   yes, yes, "1"},
    {arg_batch,              "-batch",              6,  0, 0,   yes, no,  "1"},
    {arg_Command,            "-Command",            2,  1, 40,  no,  no,  nullptr},
    {arg_commands_file,      "-commands_file",      9,  1, 1,   no,  no,  nullptr},
    {arg_connect,            "-connect",            5,  0, 0,   yes, no,  "first"},
    {arg_context,            "-context",            5,  1, 0,   no,  no,  nullptr},
    {arg_display,            "-display",            3,  1, 0,   no,  yes, nullptr},
    {arg_editor,             "-editor",             2,  1, 0,   no,  no,  nullptr},
    {arg_enabled,            "-enabled",            3,  0, 0,   yes, yes, "1"},
    {arg_external,           "-external",           8,  0, 0,   yes, yes, "1"},
    {arg_file,               "-file",               3,  1, 0,   no,  no,  nullptr},
    {arg_first,              "-first",              3,  0, 0,   yes, no,  "1"},
    {arg_Force,              "-Force",              2,  0, 0,   yes, no,  "1"},
    {arg_formats,            "-formats",            2,  1, 0,   no,  no,  nullptr},
    {arg_forward_messages,   "-forward_messages",   4,  1, 0,   no,  yes, nullptr},
    {arg_from_cte,           "-from_cte",           8,  0, 0,   yes, no,  "1"},
    {arg_gethandle,          "-gethandle",          3,  0, 0,   yes, no,  "1"},
    {arg_guid,               "-guid",               5,  0, 0,   yes, no,  "1"},
    {arg_handle,             "-handle",             2,  1, 0,   no,  no,  "0"},
    {arg_host,               "-host",               4,  1, 0,   no,  no,  nullptr},
    {arg_ignore,             "-ignore",             6,  0, 1,   yes, no,  "1"},
    {arg_Incldir,            "-Incldir",            2,  1, 40,  no,  no,  "."},
    {arg_Interactive,        "-Interactive",        2,  0, 0,   yes, no,  "1"},
    {arg_merge,              "-merge",              5,  0, 0,   yes, no,  "1"},
    {arg_noannot,            "-noannot",            7,  0, 0,   yes, no,  "1"},
    {arg_nodiagram,          "-nodiagram",          9,  0, 0,   yes, no,  "1"},
    {arg_noexternal,         "-noexternal",         10, 0, 0,   yes, no,  "1"},
    {arg_nograph,            "-nograph",            4,  0, 0,   yes, yes, "1"},
    {arg_nostartup,          "-nostartup",          4,  0, 0,   yes, no,  "1"},
    {arg_forkedfromstartup,  "-forkedfromstartup",  17, 0, 0,   yes, no,  "1"},
    {arg_notable,            "-notable",            7,  0, 0,   yes, no,  "1"},
    {arg_orientation,        "-orientation",        11, 1, 0,   no,  no,  nullptr},
    {arg_output,             "-output",             2,  1, 0,   no,  no,  nullptr},
    {arg_overwrite,          "-overwrite",          9,  0, 0,   yes, no,  "1"},
    {arg_pageheight,         "-pageheight",         5,  1, 0,   no,  no,  nullptr},
    {arg_pagewidth,          "-pagewidth",          5,  1, 0,   no,  no,  nullptr},
    {arg_path,               "-path",               3,  0, 0,   yes, no,  "1"},
    {arg_port,               "-port",               4,  1, 0,   no,  no,  nullptr},
    {arg_print_setting,      "-print_setting",      4,  1, 0,   no,  no,  nullptr},
    {arg_printer,            "-printer",            7,  1, 0,   no,  no,  nullptr},
    {arg_product,            "-product",            5,  1, 0,   no,  yes, nullptr},
    {arg_progress_channel,   "-progress_channel",   10, 1, 0,   no,  no,  nullptr},
    {arg_projdir,            "-projdir",            2,  1, 0,   no,  no,  nullptr},
    {arg_Quiet,              "-Quiet",              1,  0, 0,   yes, yes, "1"},
    {arg_relaxed,            "-relaxed",            3,  0, 0,   yes, yes, "1"},
    {arg_replace,            "-replace",            2,  0, 0,   no,  no,  nullptr},
    {arg_Revision,           "-Revision",           2,  1, 0,   no,  no,  nullptr},
    {arg_rman,               "-rman",               4,  1, 0,   no,  no,  nullptr},
    {arg_rules_print,        "-rules_print",        3,  1, 0,   no,  no,  nullptr},
    {arg_server,             "-server",             6,  1, 0,   no,  no,  nullptr},
    {arg_session,            "-session",            5,  1, 0,   no,  no,  nullptr},
    {arg_show_system,        "-show_system",        6,  0, 1,   no,  no,  nullptr},
    {arg_source,             "-source",             7,  1, 0,   no,  no,  nullptr},
    {arg_srcdir,             "-srcdir",             7,  1, 0,   no,  no,  nullptr},
    {arg_system,             "-system",             2,  1, 0,   no,  no,  nullptr},
    {arg_target,             "-target",             2,  1, 0,   no,  no,  nullptr},
    {arg_toolinfo,           "-toolinfo",           1,  1, 1,   no,  yes, nullptr},
    {arg_trace,              "-trace",              6,  1, 60,  no,  yes, "all"},
    {arg_trace_file,         "-trace_file",         11, 1, 1,   no,  yes, nullptr},
    {arg_traditional,        "-traditional",        3,  0, 0,   yes, yes, "1"},
    {arg_transaction,        "-transaction",        6,  0, 0,   yes, no,  "1"},
    {arg_transient,          "-transient",          10, 0, 0,   no,  no,  "1"},
    {arg_filter,             "-filter",             4,  1, 1,   no,  no,  nullptr},
    {arg_Type,               "-Type",               2,  1, 0,   no,  no,  nullptr},
    {arg_update,             "-update",             2,  0, 0,   no,  no,  nullptr},
    {arg_verbose,            "-verbose",            2,  0, 0,   yes, yes, "1"},
    {arg_version,            "-version",            5,  0, 0,   yes, yes, "1"},
    {arg_viewafter,          "-viewafter",          5,  0, 0,   no,  no,  nullptr},
    {arg_x,                  "-x",                  2,  2, 100, no,  no,  nullptr},
    {arg_noclasscomments,    "-noclasscomments",    15, 0, 0,   yes, no,  "1"},
    {arg_nooperationbodies,  "-nooperationbodies",  18, 0, 0,   yes, no,  "1"},
    {arg_end,                nullptr,               0,  0, 0,   no,  no,  nullptr},
};
// clang-format on

constexpr std::size_t rowCount = std::size(rows) - 1;

/// The rows in the order of the character behind the dash, those with the same
/// one in table order. One argument has about five rows to look at then, not 71,
/// which was half of the work of parsing 20 options.
struct LetterIndex {
    std::array<std::uint8_t, rowCount> order{};
    std::array<std::uint8_t, 256> begin{}; ///< in order, by letter
    std::array<std::uint8_t, 256> end{};
};

// At compile time: static objects may parse before any initialisation of this file.
constexpr LetterIndex makeLetterIndex() {
    LetterIndex index;
    std::uint8_t count = 0;
    for (std::size_t letter = 0; letter < index.begin.size(); ++letter) {
        index.begin[letter] = count;
        for (std::size_t row = 0; row < rowCount; ++row)
            if (static_cast<unsigned char>(rows[row].text[1]) == letter)
                index.order[count++] = static_cast<std::uint8_t>(row);
        index.end[letter] = count;
    }
    return index;
}

constexpr LetterIndex letterIndex = makeLetterIndex();

/// The option that a dash alone abbreviates, whatever its letter.
constexpr const KazArgDescription* findDashRow() {
    const KazArgDescription* row = rows;
    while (row->minLength > 1)
        ++row;
    return row;
}

/// Does an argument of @p length characters select the row?
bool selects(const KazArgDescription& row, const char* argument, std::size_t length) {
    const std::size_t full = std::strlen(row.text);
    const char last = argument[length - 1];
    // The digit goes behind the whole text alone; an abbreviation with one is another word.
    if (row.isSwitch && length == full + 1 && (last == '0' || last == '1'))
        length = full;
    return length >= static_cast<std::size_t>(row.minLength) && length <= full &&
           std::memcmp(argument, row.text, length) == 0;
}

} // namespace

const KazArgDescription* KazArgDescription::table() {
    return rows;
}

const KazArgDescription* KazArgDescription::find(arg_type_enum type) {
    // Looked for and not indexed: the types are numbered in another order than the rows.
    for (const KazArgDescription* row = rows; row->type != arg_end; ++row)
        if (row->type == type)
            return row;
    return nullptr;
}

const KazArgDescription* KazArgDescription::match(const char* argument) {
    if (argument == nullptr || argument[0] != '-')
        return nullptr;
    if (argument[1] == '\0')
        return findDashRow();
    const auto letter = static_cast<unsigned char>(argument[1]);
    const std::size_t length = std::strlen(argument);
    for (std::size_t i = letterIndex.begin[letter]; i < letterIndex.end[letter]; ++i)
        if (const KazArgDescription& row = rows[letterIndex.order[i]];
            selects(row, argument, length))
            return &row;
    return nullptr;
}
