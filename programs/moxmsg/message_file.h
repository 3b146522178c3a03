// SPDX-License-Identifier: Apache-2.0
/// @file
/// The binary form of a message file.
#pragma once

#include "messages.h"

/// Whether @p bytes begin as a message file does.
bool isMessageFile(const std::string& bytes);

/// Adds the messages of a message file, and what is wrong with it.
void decodeMessageFile(const std::string& bytes, Messages& messages);

/// The message file with @p messages, the same bytes for the same texts. Texts
/// that do not fit become problems of @p messages.
std::string encodeMessageFile(Messages& messages);
