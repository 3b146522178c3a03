// SPDX-License-Identifier: Apache-2.0
/// @file
/// What stands in the lines of a recorded dialogue.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <cstdarg>
#include <string>
#include <string_view>

struct _gu_set_struct_;

namespace kaz::detail::dialogue {

std::string_view viewOf(const KazString& text);

/// The present time: "2026-11-22T08:05:09.250Z".
std::string timeText();

/// The formatted text as the console ends it: without the newline of its format. @p args
/// stays unread.
std::string textOf(const char* format, va_list args) KAZ_PRINTF(1, 0);

/// JSON lists: the numbers of symbols, a null set having none, and texts.
std::string listOf(const _gu_set_struct_* symbols);
std::string listOf(int count, const char* const* texts);

/// The last part of a program's name as it was called, without ".exe".
std::string_view toolName(int argc, const char* const* argv);

} // namespace kaz::detail::dialogue
