// SPDX-License-Identifier: Apache-2.0
/// @file
/// The text of the file that holds a user's settings.
///
///     # Mox settings 1
///
///     [Editor/Window]
///     title=s:one\ntwo
///     width=i:640
///
/// A line that is not understood, of a newer program for instance, means nothing and stays
/// at the end of its section. So does a whole section whose name is not understood, and
/// what stands before the first one.
#pragma once

#include "tools/platform/host_settings.h"

#include <string>
#include <string_view>

namespace kaz::host {

/// What one section of @p text holds.
void readSettings(std::string_view text, std::string_view section, SettingsSection& result);

/// @p text with the changes of one section carried out, in the order in which settings are
/// written. May throw for lack of memory.
std::string changedSettings(std::string_view text, const std::string& section,
                            const SettingsChanges& changes);

} // namespace kaz::host
