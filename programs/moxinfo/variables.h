// SPDX-License-Identifier: Apache-2.0
/// @file
/// The variables, their values and where these come from.
#pragma once

#include "common/configuration.h"
#include "common/output.h"

#include <string>
#include <vector>

/// A variable that some source gives.
struct Variable {
    std::string name;
    std::string value;  ///< on one line
    std::string source; ///< a file name, or "environment", "run-time" or "library"
};

/// All that are defined, in byte order of their names.
std::vector<Variable> allVariables();

/// Shows the files and each variable under its source, or only what @p wanted gives, a
/// source of a variable; "" is none.
void showAll(LineOutput& output, const std::string& wanted);

/// Shows what the arguments name, variables or templates; with @p withSources where each
/// value comes from. False, and told, when one is not defined.
bool showArguments(LineOutput& output, bool withSources);

/// Shows the origin of the variables that the arguments name, or of all. False when one
/// that is named is empty or, which is told, not defined.
bool showOrigins(LineOutput& output, const Configuration& configuration);
