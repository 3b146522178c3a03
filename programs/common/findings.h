// SPDX-License-Identifier: Apache-2.0
/// @file
/// What is wrong, or may surprise, in the ToolInfo files and in the environment that
/// overrides them.
#pragma once

#include "common/configuration.h"

#include <string>
#include <vector>

/// One of them. What is not found in a line is defined as it is written there.
struct Finding {
    enum Severity { Error, Warning, Note };

    Severity severity;
    int file; ///< the file's number in the configuration; -1 for the environment
    int line;
    std::string text; ///< printable
    const char* code; ///< a word that stays the same, whatever the text says
};

/// All, by file and line; those of the environment come last.
std::vector<Finding> findingsOf(const Configuration& configuration);
