// SPDX-License-Identifier: Apache-2.0
// How text comes out on the user's console.

#include "tools/platform/host.h"

#include <io.h>
#include <windows.h>

namespace kaz::host {

namespace {

HANDLE consoleOf(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

bool isControl(unsigned char c) {
    return c < 0x20 || c == 0x7F;
}

/// Bytes of the UTF-8 character at the start; 0 when there is none.
/// The lead byte gives a length, and the system says whether the bytes are a character. Controls of
/// the upper half (U+0080 to U+009F) are none: a terminal may obey them.
std::size_t utf8Size(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (size > text.size())
        return 0;
    wchar_t wide[2];
    const int count = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                          static_cast<int>(size), wide, 2);
    return count > 0 && !(count == 1 && wide[0] >= 0x80 && wide[0] < 0xA0) ? size : 0;
}

/// This runtime has no table of widths: each character counts as one column.
Glyph firstGlyph(std::string_view text, std::size_t offset, bool utf8) {
    const std::string_view rest = text.substr(offset);
    if (isControl(static_cast<unsigned char>(rest[0])))
        return {offset, 1, -1};
    const std::size_t size = utf8 ? utf8Size(rest) : 1;
    return size > 0 ? Glyph{offset, size, 1} : Glyph{offset, 1, -1};
}

} // namespace

bool isTerminal(std::FILE* stream) {
    DWORD mode = 0;
    return GetConsoleMode(consoleOf(stream), &mode) != 0;
}

/// Consoles before Windows 10 refuse the mode. It is the console's and stays when the tool ends.
bool allowEscapes(std::FILE* stream) {
    DWORD mode = 0;
    return GetConsoleMode(consoleOf(stream), &mode) != 0 &&
           SetConsoleMode(consoleOf(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

/// Of the window: the buffer behind it may be wider.
int terminalWidth(std::FILE* stream) {
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (GetConsoleScreenBufferInfo(consoleOf(stream), &info) == 0)
        return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

bool terminalShowsUtf8() {
    return GetConsoleOutputCP() == CP_UTF8;
}

std::vector<Glyph> glyphsOf(std::string_view text) {
    const bool utf8 = terminalShowsUtf8();
    std::vector<Glyph> glyphs;
    glyphs.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); at += glyphs.back().size)
        glyphs.push_back(firstGlyph(text, at, utf8));
    return glyphs;
}

} // namespace kaz::host
