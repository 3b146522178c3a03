// SPDX-License-Identifier: Apache-2.0
/// @file
/// A program's arguments as the one text in which Windows hands them over.
#pragma once

#include <string>
#include <vector>

namespace kaz::host {

/// The text from which the runtime library of the started program gets exactly
/// @p arguments back.
std::string commandLine(const std::vector<std::string>& arguments);

} // namespace kaz::host
