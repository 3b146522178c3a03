// SPDX-License-Identifier: Apache-2.0
/// @file
/// The readable form of a message file; docs/message-files.md describes it.
#pragma once

#include "messages.h"

/// Adds the messages of a source text, and what is wrong with it.
void parseSource(const std::string& source, Messages& messages);

/// The line of a message, without its end, such that parsing it gives the
/// message back.
std::string sourceLine(int number, const std::string& text);
