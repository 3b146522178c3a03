// SPDX-License-Identifier: Apache-2.0
// A value is judged as a whole: blanks around it are forgiven, anything else behind the number is
// not, since "10 MB" read as 10 would be a quiet mistake. The reason of a refusal is told apart
// from the refusal, because users are told what to mend. The caller's variable is written only
// for a value that is good.
#include "tools/config/typed_value.h"

#include "tools/config/toolinfo.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace {

/// The text of a number without the blanks around it and without a plus sign.
std::string_view bareNumber(const char* text) {
    constexpr std::string_view blanks = " \t\r\n";
    std::string_view number = text;
    number.remove_prefix(std::min(number.find_first_not_of(blanks), number.size()));
    number.remove_suffix(number.size() - (number.find_last_not_of(blanks) + 1));
    if (number.starts_with('+') && !number.starts_with("+-"))
        number.remove_prefix(1);
    return number;
}

template <typename Number>
kaz_value_enum checkNumber(const char* text, Number least, Number greatest, Number* value) {
    if (text == nullptr)
        return kaz_value_missing;
    const std::string_view digits = bareNumber(text);
    const char* const end = digits.data() + digits.size();
    Number number = 0;
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    // Trailing text first: "99999999999x" is no number, and not one out of range.
    if (error == std::errc::invalid_argument || stop != end ||
        !std::isfinite(static_cast<double>(number)))
        return kaz_value_malformed;
    if (error != std::errc() || number < least || number > greatest)
        return kaz_value_out_of_range;
    if (value != nullptr)
        *value = number;
    return kaz_value_good;
}

} // namespace

kaz_value_enum kaz_check_integer(const char* text, int least, int greatest, int* value) {
    return checkNumber(text, least, greatest, value);
}

kaz_value_enum kaz_check_real(const char* text, double least, double greatest, double* value) {
    return checkNumber(text, least, greatest, value);
}

kaz_value_enum kaz_check_boolean(const char* text, bool* value) {
    if (text == nullptr)
        return kaz_value_missing;
    const bool isYes = TI_yesorno(text, false);
    // The reader of truth values answers with its default for what it does not know: two defaults
    // show whether it knew.
    if (isYes != TI_yesorno(text, true))
        return kaz_value_malformed;
    if (value != nullptr)
        *value = isYes;
    return kaz_value_good;
}
