// SPDX-License-Identifier: Apache-2.0
/// @file
/// What prompt_tool does about the terminal and about signals. Hosts differ here.
#pragma once

#include <string_view>

/// Asks for a secret and shows the answer; 0 when there was one.
int askSecret();

/// Does the same in the circumstances that @p what names; in none for a name that
/// the host does not know.
int askOnTerminal(std::string_view what);
