// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a stored value is as another type. False, with the result unchanged, where it is
/// not; see the table of KazSettings.
#pragma once

#include "tools/platform/host_settings.h"
#include "tools/strings/KazString.h"

#include <cstdint>

namespace kaz::detail {

bool asText(const host::SettingsValue& value, KazString& result);
bool asInteger(const host::SettingsValue& value, std::int64_t& result);
bool asReal(const host::SettingsValue& value, double& result);
bool asBool(const host::SettingsValue& value, bool& result);

} // namespace kaz::detail
