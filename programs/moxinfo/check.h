// SPDX-License-Identifier: Apache-2.0
/// @file
/// The findings in a configuration as text.
#pragma once

#include "common/configuration.h"
#include "common/output.h"

/// Shows each finding and how many there are. True when none is an error or a warning.
/// For the first one that is, the editor opens where the user has asked for that (see
/// openComplaint).
bool showFindings(const Configuration& configuration, LineOutput& output);
