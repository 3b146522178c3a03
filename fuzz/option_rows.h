// SPDX-License-Identifier: Apache-2.0
/// @file
/// The suite's options as its users know them, for the tests to judge by. Kept
/// apart from the library's table on purpose: a slip there must show here.
#pragma once

#include <sstream>
#include <string>
#include <vector>

/// One option, and what a command line argument means to it.
struct OptionRow {
    std::string text;
    int type = 0;
    std::size_t shortest = 0;
    int values = 0;
    int repeats = 0;
    bool isSwitch = false;
    bool isGlobal = false;
    std::string defaultText;

    bool selectedBy(const std::string& argument) const {
        if (isSwitch && (argument == text + "0" || argument == text + "1"))
            return true;
        return argument.size() >= shortest && text.starts_with(argument);
    }
};

/// Option, type, shortest abbreviation, values, repeat limit, Switch and
/// Global, default text; in search order.
inline const char* const optionRows = R"(
-# 12 2 0 0 SG 1
-batch 55 6 0 0 S. 1
-Command 8 2 1 40 .. -
-commands_file 9 9 1 1 .. -
-connect 10 5 0 0 S. first
-context 59 5 1 0 .. -
-display 13 3 1 0 .G -
-editor 14 2 1 0 .. -
-enabled 24 3 0 0 SG 1
-external 0 8 0 0 SG 1
-file 65 3 1 0 .. -
-first 36 3 0 0 S. 1
-Force 16 2 0 0 S. 1
-formats 17 2 1 0 .. -
-forward_messages 62 4 1 0 .G -
-from_cte 61 8 0 0 S. 1
-gethandle 18 3 0 0 S. 1
-guid 56 5 0 0 S. 1
-handle 19 2 1 0 .. 0
-host 58 4 1 0 .. -
-ignore 1 6 0 1 S. 1
-Incldir 20 2 1 40 .. .
-Interactive 21 2 0 0 S. 1
-merge 2 5 0 0 S. 1
-noannot 3 7 0 0 S. 1
-nodiagram 4 9 0 0 S. 1
-noexternal 5 10 0 0 S. 1
-nograph 22 4 0 0 SG 1
-nostartup 51 4 0 0 S. 1
-forkedfromstartup 52 17 0 0 S. 1
-notable 6 7 0 0 S. 1
-orientation 25 11 1 0 .. -
-output 23 2 1 0 .. -
-overwrite 7 9 0 0 S. 1
-pageheight 67 5 1 0 .. -
-pagewidth 66 5 1 0 .. -
-path 26 3 0 0 S. 1
-port 57 4 1 0 .. -
-print_setting 29 4 1 0 .. -
-printer 27 7 1 0 .. -
-product 30 5 1 0 .G -
-progress_channel 69 10 1 0 .. -
-projdir 31 2 1 0 .. -
-Quiet 34 1 0 0 SG 1
-relaxed 32 3 0 0 SG 1
-replace 44 2 0 0 .. -
-Revision 35 2 1 0 .. -
-rman 63 4 1 0 .. -
-rules_print 28 3 1 0 .. -
-server 64 6 1 0 .. -
-session 11 5 1 0 .. -
-show_system 60 6 0 1 .. -
-source 68 7 1 0 .. -
-srcdir 50 7 1 0 .. -
-system 37 2 1 0 .. -
-target 39 2 1 0 .. -
-toolinfo 40 1 1 1 .G -
-trace 41 6 1 60 .G all
-trace_file 42 11 1 1 .G -
-traditional 33 3 0 0 SG 1
-transaction 43 6 0 0 S. 1
-transient 70 10 0 0 .. 1
-filter 71 4 1 1 .. -
-Type 38 2 1 0 .. -
-update 45 2 0 0 .. -
-verbose 47 2 0 0 SG 1
-version 48 5 0 0 SG 1
-viewafter 49 5 0 0 .. -
-x 15 2 2 100 .. -
-noclasscomments 53 15 0 0 S. 1
-nooperationbodies 54 18 0 0 S. 1
)";

inline std::vector<OptionRow> readOptionRows() {
    std::vector<OptionRow> rows;
    std::istringstream in(optionRows);
    OptionRow row;
    std::string flags;
    while (in >> row.text >> row.type >> row.shortest >> row.values >> row.repeats >> flags >>
           row.defaultText) {
        row.isSwitch = flags[0] == 'S';
        row.isGlobal = flags[1] == 'G';
        rows.push_back(row);
    }
    return rows;
}

/// The first row that the argument selects, or null.
inline const OptionRow* selectRow(const std::vector<OptionRow>& rows, const std::string& argument) {
    for (const OptionRow& row : rows)
        if (row.selectedBy(argument))
            return &row;
    return nullptr;
}
