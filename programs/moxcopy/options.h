// SPDX-License-Identifier: Apache-2.0
/// @file
/// What moxcopy is asked to do.
#pragma once

#include "tools/strings/KazString.h"

#include <vector>

/// A diagram that was named on the command line.
struct Diagram {
    KazString given;    ///< as the user wrote it
    KazString fileName; ///< as its files are called under the naming rules
};

/// The command line, checked. Paths are native and absolute.
struct CopyOptions {
    KazString project; ///< the project's directory
    KazString system;
    KazString source; ///< the system's directory
    KazString target; ///< the directory that receives the copy
    KazString filter; ///< a wildcard for file names, or ""
    std::vector<Diagram> diagrams;
    bool verbose = false;
    bool force = false;
    bool quiet = false;
    bool onlyPlan = false; ///< say what would be done

    /// Only some of the system's files are wanted.
    bool isRestricted() const { return !filter.isEmpty() || !diagrams.empty(); }
    /// The directory that is the copy.
    KazString destination() const;
};

/// Reads the command line. KazCommandLine::run, or the status to end with: all has then
/// been said.
int readOptions(int argc, char** argv, CopyOptions& options);
