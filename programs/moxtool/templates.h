// SPDX-License-Identifier: Apache-2.0
/// @file
/// The files of a new project, part of the program.
#pragma once

#include <string_view>

/// "@NAME@" and "@VERSION@" stand for the project's name and the library's version.
struct Template {
    std::string_view name; ///< below the project, "/" between folder and file
    std::string_view text; ///< its contents
};

/// In the order in which they are written; made by the build from the folder templates/.
extern const Template templates[];
extern const int templateCount; ///< how many these are
