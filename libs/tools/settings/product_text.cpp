// SPDX-License-Identifier: Apache-2.0
// One pass over the lines. Each line is checked before anything of it is taken, and the first bad
// one ends the reading with its number: a product file is made by programs, so half of it is of
// no use. The checksum is of the lines before its own as they are read, with one newline each, so
// that a file that went through another system's line ends is still whole.
#include "tools/settings/detail/product_text.h"

#include "tools/platform/utf8.h"
#include "tools/services/crc32.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace kaz::detail {

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::size_t mostOfValue = 1000;
constexpr std::array<std::string_view, 6> ownKeys = {"name", "version", "build",
                                                     "date", "part",    "checksum"};

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view takeWord(std::string_view& text) {
    const std::string_view word = text.substr(0, text.find_first_of(blanks));
    text = trimmed(text.substr(word.size()));
    return word;
}

KazString toText(std::string_view text) {
    return std::string(text).c_str();
}

bool isKey(std::string_view key) {
    constexpr std::size_t longest = 40;
    return !key.empty() && key.size() <= longest &&
           key.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_-") == key.npos;
}

/// UTF-8 without control characters but TAB.
/// The people who read the file see what the programs read.
bool isReadable(std::string_view line) {
    std::string text(line);
    std::replace(text.begin(), text.end(), '\t', ' ');
    return host::isUtf8(text) && !host::hasControl(text);
}

template <typename Number>
bool readNumber(std::string_view text, int base, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && stop == end;
}

bool readChecksum(std::string_view text, std::uint32_t& sum) {
    constexpr std::size_t digits = 8;
    return text.size() == digits && readNumber(text, 16, sum);
}

int daysIn(int month, int year) {
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    constexpr std::array<int, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeap ? 29 : days[static_cast<std::size_t>(month - 1)];
}

} // namespace

bool isFreeProductKey(std::string_view key) {
    return isKey(key) && std::find(ownKeys.begin(), ownKeys.end(), key) == ownKeys.end();
}

/// A value with blanks at its ends would be read back without them.
bool isProductValue(std::string_view value) {
    return !value.empty() && value.size() <= mostOfValue && host::isUtf8(value) &&
           !host::hasControl(value) && trimmed(value) == value;
}

bool isProductDate(std::string_view date) {
    constexpr std::string_view form = "dddd-dd-dd";
    const auto fits = [](char c, char f) { return f == 'd' ? c >= '0' && c <= '9' : c == f; };
    // The form first: the numbers behind it are then digits, and fit.
    if (!std::equal(date.begin(), date.end(), form.begin(), form.end(), fits))
        return false;
    int year = 0, month = 0, day = 0;
    readNumber(date.substr(0, 4), 10, year);
    readNumber(date.substr(5, 2), 10, month);
    readNumber(date.substr(8, 2), 10, day);
    return year >= 1 && month >= 1 && month <= 12 && day >= 1 && day <= daysIn(month, year);
}

/// One word that is not "-", which stands for none in the line of a part.
bool isPartVersion(std::string_view version) {
    return version.empty() || (version != "-" && isProductValue(version) &&
                               version.find_first_of(blanks) == version.npos);
}

/// Relative, with "/" between names, and nowhere upwards: a part lies below the root on every
/// host.
bool isPartPath(std::string_view path) {
    if (path.find_first_of(":\\") != path.npos)
        return false;
    for (std::size_t at = 0; at <= path.size();) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        const std::string_view name = path.substr(at, end - at);
        if (name.empty() || name == "." || name == "..")
            return false;
        at = end + 1;
    }
    return true;
}

/// The path comes last and may hold blanks; everything before it is one word each.
std::string partValue(const KazProductInfo::Part& part) {
    std::array<char, 40> front; // checksum and size
    std::snprintf(front.data(), front.size(), "%08lx %llu ",
                  static_cast<unsigned long>(part.checksum),
                  static_cast<unsigned long long>(part.size));
    return front.data() + std::string(part.version.isEmpty() ? "-" : part.version.getValue()) +
           " " + part.path.getValue();
}

ProductText::ProductText(std::string_view text) {
    int number = 0;
    while (!text.empty()) {
        ++number;
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        // A CR is part of a line end only in front of an LF.
        if (end != text.npos && line.ends_with('\r'))
            line.remove_suffix(1);
        const bool counts = !line.starts_with('%') && !trimmed(line).empty();
        if (counts && !takeLine(line)) {
            errorLine = number;
            return;
        }
        // Behind the checksum only comments and blank lines can stand, which count for nothing.
        if (!hasChecksum_)
            addToSum(line);
    }
    // What lacks is reported behind the last line.
    if (name.isEmpty() || version.isEmpty())
        errorLine = number + 1;
    else if (!hasChecksum_)
        state = KazProductInfo::NoChecksum;
    else
        state = sum_ == checksum_ ? KazProductInfo::Good : KazProductInfo::WrongChecksum;
}

void ProductText::addToSum(std::string_view line) {
    sum_ = kaz_crc32(sum_, line.data(), line.size());
    sum_ = kaz_crc32(sum_, "\n", 1);
}

bool ProductText::takeLine(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (hasChecksum_ || equals == line.npos || !isReadable(line))
        return false;
    const std::string_view key = trimmed(line.substr(0, equals));
    const std::string_view value = trimmed(line.substr(equals + 1));
    // A part may be there many times; every other key once.
    return isKey(key) && !value.empty() && value.size() <= mostOfValue &&
           (key == "part" ? takePart(value) : keys_.insert(key).second && takeValue(key, value));
}

bool ProductText::takeValue(std::string_view key, std::string_view value) {
    constexpr std::size_t mostDigits = 9;
    if (key == "name")
        name = toText(value);
    else if (key == "version")
        version = toText(value);
    else if (key == "build")
        // Nine digits fit an int; from_chars() would take a minus.
        return value.size() <= mostDigits && value[0] != '-' && readNumber(value, 10, build);
    else if (key == "checksum")
        return hasChecksum_ = readChecksum(value, checksum_);
    else if (key != "date")
        values.emplace_back(toText(key), toText(value));
    else if (isProductDate(value))
        date = toText(value);
    else
        return false;
    return true;
}

bool ProductText::takePart(std::string_view value) {
    KazProductInfo::Part part;
    if (!readChecksum(takeWord(value), part.checksum) ||
        !readNumber(takeWord(value), 10, part.size))
        return false;
    const std::string_view word = takeWord(value);
    part.version = word == "-" ? KazString() : toText(word);
    part.path = toText(value);
    if (word.empty() || !isPartPath(value) || !paths_.insert(value).second)
        return false;
    parts.push_back(std::move(part));
    return true;
}

} // namespace kaz::detail
