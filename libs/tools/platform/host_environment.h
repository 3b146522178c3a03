// SPDX-License-Identifier: Apache-2.0
/// @file
/// Part of the door to the operating system (see host.h for its conventions): the
/// environment as a whole.
#pragma once

namespace kaz::host {

/// The variables of this process, each "NAME=value", and a null behind the last; null
/// where there are none. Lives until a variable is changed; never freed by the caller.
char** environmentEntries();

} // namespace kaz::host
