// SPDX-License-Identifier: Apache-2.0
/// @file
/// What became of a command line: why it was refused, and what each word was read as.
#pragma once

#include "tools/app/KazArgDescription.h"
#include "tools/export.h"

/// Why a command line was refused.
struct KAZ_API KazArgProblem {
    /// What can be wrong.
    enum Kind : int {
        none,             ///< It was not.
        unknownOption,    ///< The word selects no row of the option table.
        unlistedOption,   ///< The word selects a row that is in neither list.
        valuesMissing,    ///< The line ends before the values of the row.
        tooOften,         ///< The row was given more often than its limit allows.
        requiredMissing,  ///< An option of the list of required ones was not given.
        argumentsMissing, ///< There are fewer plain arguments than asked for.
    };

    /// What was wrong; `none` for a line that was accepted.
    Kind kind = none;
    /// The option concerned, the first one that is missing; null where there is none.
    const KazArgDescription* row = nullptr;
    /// Where in argv the word is that decided; 0 where the end of the line did.
    int position = 0;
    /// Whether that word is shorter than the option's full text.
    bool isAbbreviated = false;
};

/// What a word of the command line was read as.
struct KAZ_API KazArgMeaning {
    /// What a word can be.
    enum Kind : int {
        notRead,    ///< Nothing: the line was refused before it, or it is argv[0] or null.
        option,     ///< The option `row`.
        repetition, ///< The option `row` once more: ignored, and no value was taken.
        value,      ///< Value `item` of the option `row`, whatever it looks like.
        argument,   ///< The plain argument `item` of the set.
    };

    /// What the word was read as.
    Kind kind = notRead;
    /// The row that is meant by it; null where there is none. Static data.
    const KazArgDescription* row = nullptr;
    int item = 0; ///< Counted from 0; of one occurrence for values.
};
