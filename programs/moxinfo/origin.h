// SPDX-License-Identifier: Apache-2.0
/// @file
/// Where the value of a variable comes from.
#pragma once

#include "common/configuration.h"

#include <string>
#include <vector>

/// The variable with the value in force, and below it everything that could have given
/// one, in the order in which it is asked: what is in force is marked with a star, other
/// definitions say why they do not count. Nothing for a variable that is not defined.
std::vector<std::string> originOf(const Configuration& configuration, const std::string& name);
