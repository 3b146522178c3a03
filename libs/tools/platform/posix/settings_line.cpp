// SPDX-License-Identifier: Apache-2.0
// What is written with escapes is what would not come back without. Reading takes more: somebody
// may have edited the file.
#include "tools/platform/posix/settings_line.h"

#include "tools/platform/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>
#include <utility>

namespace kaz::host {

namespace {

/// The bit makes letters small. What it makes of other characters is no letter up to "f".
int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Takes one escape, behind its backslash, from the front. False for a bad one.
bool takeEscape(std::string_view& text, std::string& out) {
    constexpr std::string_view letters = "\\nrt";
    constexpr std::string_view meanings = "\\\n\r\t";
    const char letter = text.empty() ? '\0' : text.front();
    if (letter == 'x' && text.size() >= 3) {
        const int high = hexDigit(text[1]);
        const int low = hexDigit(text[2]);
        // Texts have no NUL, however it is written.
        if (high < 0 || low < 0 || high + low == 0)
            return false;
        out += static_cast<char>(high * 16 + low);
        text.remove_prefix(3);
        return true;
    }
    // A backslash at the end asks for NUL, which is not among the letters.
    const std::size_t kind = letters.find(letter);
    if (kind == letters.npos)
        return false;
    out += meanings[kind];
    text.remove_prefix(1);
    return true;
}

/// The text without escapes; false for a bad one and for a NUL.
bool unescape(std::string_view text, std::string& out) {
    out.clear();
    for (;;) {
        const std::size_t plain = std::min(text.find('\\'), text.size());
        out += text.substr(0, plain);
        if (plain == text.size())
            return out.find('\0') == out.npos;
        text.remove_prefix(plain + 1);
        if (!takeEscape(text, out))
            return false;
    }
}

/// Appends the text with escapes for what would not come back, and for @p others.
void escape(std::string_view text, std::string_view others, std::string& out) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else if (c == '\t')
            out += "\\t";
        else if (byte < 0x20 || byte == 0x7F || others.find(c) != others.npos)
            (out += "\\x").append({digits[byte >> 4], digits[byte & 15]});
        else
            out += c;
    }
}

constexpr std::string_view escapedInNames = "=[]#";
constexpr std::string_view escapedInLists = "|";

/// The whole text as a number, which is finite.
template <typename Number>
bool readNumber(std::string_view text, SettingsValue& value) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return false;
    if constexpr (std::is_same_v<Number, double>)
        if (!std::isfinite(number))
            return false;
    value = number;
    return true;
}

bool readText(std::string_view text, std::string& out) {
    if (!unescape(text, out) || out.size() > mostOfSettingsText)
        return false;
    // Somebody has edited the file; escapes can spell half a character, too.
    if (!isUtf8(out))
        out = validUtf8(out);
    return true;
}

bool readList(std::string_view text, SettingsValue& value) {
    SettingsList list;
    while (!text.empty()) {
        const std::size_t end = text.find('|');
        if (end == text.npos || list.size() == mostOfSettingsList ||
            !readText(text.substr(0, end), list.emplace_back()))
            return false;
        text.remove_prefix(end + 1);
    }
    value = std::move(list);
    return true;
}

bool readValue(char type, std::string_view text, SettingsValue& value) {
    switch (type) {
    case 's': {
        std::string& out = value.emplace<std::string>();
        return readText(text, out);
    }
    case 'i':
        return readNumber<std::int64_t>(text, value);
    case 'r':
        return readNumber<double>(text, value);
    case 'b':
        value = text == "1";
        return text == "0" || text == "1";
    case 'l':
        return readList(text, value);
    default:
        return false;
    }
}

template <typename Number>
void appendNumber(std::string& out, Number number) {
    std::array<char, 32> text; // the longest double takes 24
    out.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
}

} // namespace

bool readLine(std::string_view line, SettingsEntry& entry) {
    const std::size_t equals = line.find('=');
    return equals != line.npos && equals + 2 < line.size() && line[equals + 2] == ':' &&
           unescape(line.substr(0, equals), entry.name) && isSettingsName(entry.name) &&
           readValue(line[equals + 1], line.substr(equals + 3), entry.value);
}

bool readHeader(std::string_view line, std::string& path) {
    return line.size() >= 2 && line.back() == ']' &&
           unescape(line.substr(1, line.size() - 2), path) && isSettingsPath(path);
}

std::string lineOf(std::string_view name, const SettingsValue& value) {
    std::string line;
    escape(name, escapedInNames, line);
    line += '=';
    // In the order of the alternatives of SettingsValue.
    line += "sirbl"[value.index()];
    line += ':';
    if (const auto* text = std::get_if<std::string>(&value))
        escape(*text, "", line);
    else if (const auto* integer = std::get_if<std::int64_t>(&value))
        appendNumber(line, *integer);
    else if (const auto* real = std::get_if<double>(&value))
        appendNumber(line, *real);
    else if (const auto* flag = std::get_if<bool>(&value))
        line += *flag ? '1' : '0';
    else
        for (const std::string& each : std::get<SettingsList>(value)) {
            escape(each, escapedInLists, line);
            line += '|';
        }
    return line;
}

std::string headerOf(std::string_view path) {
    std::string line = "[";
    escape(path, escapedInNames, line);
    return line += ']';
}

} // namespace kaz::host
