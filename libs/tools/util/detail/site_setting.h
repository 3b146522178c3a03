// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a site or a user has set, for rooms below the configuration: it implements what
/// stands here, so that nobody who asks has to know how variables are kept.
#pragma once

namespace kaz::detail {

/// The value of a ToolInfo variable; null where it has none. A missing ToolInfo file is no
/// fatal error here: for what a tool can do without. Good until the variable changes.
const char* siteSetting(const char* name);

/// The same; a missing ToolInfo file is a fatal error.
const char* requiredSetting(const char* name);

} // namespace kaz::detail
