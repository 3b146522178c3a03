// SPDX-License-Identifier: Apache-2.0
/// @file
/// A complaint leads to the line that it is about.
#pragma once

#include <string>

/// Opens the place of a complaint in the user's editor (see kazShowSource) where the user has
/// asked for it: by the setting "open complaints in the editor", which is off, in the section
/// with the name of @p program. Only the first place of a run is opened, because the first fault
/// is often the reason of the others. Call it when all complaints are printed; the exit status
/// is theirs alone.
///
/// Nothing is opened without a line (below 1) and without such a file. Nor is an editor that
/// needs the terminal where there is none: nobody sits there.
void openComplaint(const char* program, const std::string& file, int line, int column = 1);
