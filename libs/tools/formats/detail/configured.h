// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a site says about dates.
#pragma once

namespace kaz::dates {

/// The value of a ToolInfo variable; null where it has none. A missing ToolInfo file is no
/// fatal error here: a date can be told without one.
const char* configured(const char* variable);

} // namespace kaz::dates
