// SPDX-License-Identifier: Apache-2.0
/// @file
/// One line of a recorded dialogue.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace kaz::detail {

/// A JSON object that is put together field by field, in this order.
class JsonLine {
public:
    /// The first field says what the line is about.
    explicit JsonLine(std::string_view event);

    JsonLine& add(std::string_view name, std::string_view text);
    JsonLine& add(std::string_view name, const char* text) {
        return add(name, std::string_view(text != nullptr ? text : ""));
    }
    JsonLine& add(std::string_view name, bool value);
    /// Whole numbers, and nothing that becomes one by itself.
    template <std::signed_integral Number>
    JsonLine& add(std::string_view name, Number number) {
        return addPlain(name, std::to_string(number));
    }
    /// A value that is JSON already.
    JsonLine& addPlain(std::string_view name, std::string_view json);

    /// The whole line, with its end.
    std::string finished() const { return text_ + "}\n"; }

private:
    void begin(std::string_view name);

    std::string text_ = "{";
};

} // namespace kaz::detail
