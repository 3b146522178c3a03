// SPDX-License-Identifier: Apache-2.0
// What is shown may come from files and from other people. Nothing that a terminal would obey
// gets through: control characters are shown as a caret and a letter, and characters that cannot
// be shown or that reorder the others as a question mark. Columns are counted as the terminal
// counts them.
#include "tools/messages/detail/TerminalText.h"

#include "tools/formats/encode.h"
#include "tools/platform/host.h"

#include <algorithm>

namespace kaz::detail {

namespace {

constexpr unsigned char del = 0x7F;

bool isPlain(char c) {
    return static_cast<unsigned char>(c) >= ' ' && static_cast<unsigned char>(c) < del;
}

/// A mark that changes the order of what is shown; it takes no column.
bool isMark(std::string_view bytes) {
    return bytes.size() > 1 && host::terminalShowsUtf8() &&
           kazPrintable(std::string(bytes).c_str()).getValue() != bytes;
}

void appendShown(std::string& result, std::string_view bytes, int columns, bool keepLines) {
    const auto c = static_cast<unsigned char>(bytes[0]);
    const bool isKept = keepLines && (c == '\n' || c == '\t');
    if (!isKept && (c < ' ' || c == del))
        result.append({'^', static_cast<char>(c ^ 0x40U)});
    else if (!isKept && (columns < 0 || (columns == 0 && isMark(bytes))))
        result += '?';
    else
        result += bytes;
}

} // namespace

std::string shownText(std::string_view text, bool keepLines) {
    if (std::all_of(text.begin(), text.end(), isPlain))
        return std::string(text);
    std::string result;
    for (const host::Glyph& glyph : host::glyphsOf(text))
        appendShown(result, text.substr(glyph.offset, glyph.size), glyph.columns, keepLines);
    return result;
}

int columnsOf(std::string_view text) {
    if (std::all_of(text.begin(), text.end(), isPlain))
        return static_cast<int>(text.size());
    int columns = 0;
    for (const host::Glyph& glyph : host::glyphsOf(text))
        columns += std::max(glyph.columns, 0);
    return columns;
}

std::string_view cutToColumns(std::string_view text, int columns) {
    for (const host::Glyph& glyph : host::glyphsOf(text)) {
        columns -= std::max(glyph.columns, 0);
        if (columns < 0)
            return text.substr(0, glyph.offset);
    }
    return text;
}

} // namespace kaz::detail
