// SPDX-License-Identifier: Apache-2.0
/// @file
/// Files without a name that stand for the standard streams. Hosts differ here.
#pragma once

#include <string>

namespace moxkit::detail {

/// A descriptor of an open file that goes with its last descriptor. As @p text it
/// holds lines like the host's standard output.
int passingFile(bool text);

/// All that the file holds, with plain line feeds where it was opened as text.
std::string contents(int file);

} // namespace moxkit::detail
