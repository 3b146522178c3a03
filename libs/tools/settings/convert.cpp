// SPDX-License-Identifier: Apache-2.0
// A stored value has the type that its writer gave it, and readers ask for the one that they
// need. A value that has no equal of that type is refused, so that the reader falls back to its
// default; the result is written only on success.
#include "tools/settings/detail/convert.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

namespace kaz::detail {

namespace {

template <typename Number>
void write(Number number, KazString& result) {
    std::array<char, 32> text; // the longest double takes 24
    *std::to_chars(text.data(), text.data() + text.size() - 1, number).ptr = '\0';
    result = text.data();
}

/// The whole text as a decimal number with or without a sign; one that is finite and fits.
template <typename Number>
bool read(std::string_view text, Number& result) {
    // from_chars() takes no "+"; behind one a "-" would be a second sign.
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    // It does take "inf" and "nan", which are no decimal numbers.
    if (error != std::errc() || stop != end || !std::isfinite(static_cast<double>(number)))
        return false;
    result = number;
    return true;
}

/// 2^63 itself is a double and no integer, hence the one bound that is not included.
bool isWhole(double number) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    return number >= -limit && number < limit && std::trunc(number) == number;
}

} // namespace

bool asText(const host::SettingsValue& value, KazString& result) {
    if (const auto* text = std::get_if<std::string>(&value))
        result = text->c_str();
    else if (const auto* integer = std::get_if<std::int64_t>(&value))
        write(*integer, result);
    else if (const auto* real = std::get_if<double>(&value))
        write(*real, result);
    else if (const auto* flag = std::get_if<bool>(&value))
        result = *flag ? "true" : "false";
    else
        return false;
    return true;
}

bool asInteger(const host::SettingsValue& value, std::int64_t& result) {
    if (const auto* text = std::get_if<std::string>(&value))
        return read(*text, result);
    const auto* real = std::get_if<double>(&value);
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        result = *integer;
    else if (const auto* flag = std::get_if<bool>(&value))
        result = *flag ? 1 : 0;
    else if (real != nullptr && isWhole(*real))
        result = static_cast<std::int64_t>(*real);
    else
        return false;
    return true;
}

bool asReal(const host::SettingsValue& value, double& result) {
    if (const auto* text = std::get_if<std::string>(&value))
        return read(*text, result);
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        // Beyond 2^53 the nearest double: an approximate number is what the reader asked for.
        result = static_cast<double>(*integer);
    else if (const auto* real = std::get_if<double>(&value))
        result = *real;
    else
        return false;
    return true;
}

/// A real is no truth value, not even 0 or 1.
bool asBool(const host::SettingsValue& value, bool& result) {
    if (const auto* flag = std::get_if<bool>(&value)) {
        result = *flag;
        return true;
    }
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        result = *integer != 0;
        return true;
    }
    const auto* text = std::get_if<std::string>(&value);
    if (text == nullptr)
        return false;
    for (const char* yes : {"true", "yes", "on", "1"})
        if (*text == yes)
            return result = true;
    for (const char* no : {"false", "no", "off", "0"})
        if (*text == no) {
            result = false;
            return true;
        }
    return false;
}

} // namespace kaz::detail
