// SPDX-License-Identifier: Apache-2.0
/// @file
/// What is wrong, or may surprise, in the environment that overrides ToolInfo files.
#pragma once

#include "common/findings.h"
#include "common/known_names.h"

#include <cstddef>

/// Shorter names have too many that are near.
constexpr std::size_t shortestNearName = 4;

/// A part of a file in a finding: printable, and not too much of it.
std::string quoted(std::string text);

void addEnvironmentFindings(const Configuration& configuration, const KnownNames& known,
                            std::vector<Finding>& findings);
