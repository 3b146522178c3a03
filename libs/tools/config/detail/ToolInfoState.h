// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the process knows of its ToolInfo files.
#pragma once

#include "tools/config/detail/ToolInfoTable.h"
#include "tools/strings/KazString.h"

#include <ctime>
#include <vector>

namespace kaz::detail {

struct ToolInfoState {
    ToolInfoTable table;
    bool overwrite = true; ///< a later definition replaces an earlier one
    bool initialised = false;
    KazString name;               ///< of the first file, as it was found or asked for
    std::vector<KazString> chain; ///< the files read, the first included
    /// What "ToolInfo" was before the first file was read: the chain goes on there
    /// unless that file says otherwise.
    KazString linkBefore;
    std::time_t recordedTime = 0;

    /// The one of the process. It is never destroyed, because static objects of
    /// a tool look variables up in their destructors.
    static ToolInfoState& instance();
};

/// Reads one file into the table. False when it cannot be read or is no regular file.
bool readToolInfoFile(const char* path, bool overwrite);

} // namespace kaz::detail
