// SPDX-License-Identifier: Apache-2.0
/// @file
/// What lies behind a standard stream, and how text comes out there. Part of
/// host.h, whose conventions hold.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>
#include <vector>

namespace kaz::host {

/// Is @p stream a terminal that a person may be looking at?
bool isTerminal(std::FILE* stream);

/// Does the terminal behind @p stream obey escape sequences? On POSIX "TERM" says
/// so: it is set, neither empty nor "dumb". On Windows they are switched on if need
/// be, for this process. False for what is no terminal.
bool allowEscapes(std::FILE* stream);

/// How many columns the terminal behind @p stream has now; 0 when it does not tell.
int terminalWidth(std::FILE* stream);

/// Does a terminal of this user show UTF-8? Asks the user's locale as it was when
/// the process started, whatever became of "LANG" since then.
bool terminalShowsUtf8();

/// One character of a text, as a terminal of this user shows it.
struct Glyph {
    std::size_t offset; ///< of its first byte
    std::size_t size;   ///< in bytes
    int columns;        ///< 0 to 2; -1 for a control character and for bytes that are no text
};

/// Takes @p text apart into characters of the user's locale, all bytes in order.
std::vector<Glyph> glyphsOf(std::string_view text);

} // namespace kaz::host
