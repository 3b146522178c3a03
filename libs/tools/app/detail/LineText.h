// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a command line says about itself.
#pragma once

#include "tools/app/KazCommandLine.h"

#include <string>

namespace kaz::detail {

/// How the tool is used: a line with everything, the summary, a line for each option.
std::string usageText(const KazCommandLine::Description& description);

/// "PROGRAM VERSION (moxtools X.Y.Z)".
std::string versionText(const KazCommandLine::Description& description);

/// The whole description as one JSON object, on one line.
std::string describedText(const KazCommandLine::Description& description);

} // namespace kaz::detail
