// SPDX-License-Identifier: Apache-2.0
/// @file
/// One line of the file that holds a user's settings.
#pragma once

#include "tools/platform/host_settings.h"

#include <string>
#include <string_view>

namespace kaz::host {

/// The line of a value; false for one that is not understood.
bool readLine(std::string_view line, SettingsEntry& entry);

/// The path in a section's line, which begins with a bracket; false when that is not understood.
bool readHeader(std::string_view line, std::string& path);

std::string lineOf(std::string_view name, const SettingsValue& value);

/// The line of a section.
std::string headerOf(std::string_view path);

} // namespace kaz::host
