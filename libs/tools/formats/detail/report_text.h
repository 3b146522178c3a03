// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a report does to texts whose place in it allows less than running text does.
#pragma once

#include "tools/formats/encode.h"

#include <string>
#include <string_view>
#include <vector>

namespace kaz::detail {

/// Valid UTF-8 without control characters, for what stands in one line.
std::string cleaned(std::string_view text, text_encoding_enum encoding);

/// As it stands, in UTF-8 if it was valid.
/// A link's bytes are part of its meaning, so nothing is replaced in them.
std::string inUtf8(std::string_view text, text_encoding_enum encoding);

/// Lines as they stand, with blanks up to the next 8 columns for each tab.
std::vector<std::string> codeLines(std::string_view text, text_encoding_enum encoding);

/// As much of RFC 5646 as keeps a tag from ending the attribute that it is written in; 35 is the
/// length that the RFC recommends to have room for.
bool isLanguage(std::string_view tag);

} // namespace kaz::detail
