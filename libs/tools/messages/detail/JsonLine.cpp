// SPDX-License-Identifier: Apache-2.0
#include "tools/messages/detail/JsonLine.h"

#include "tools/formats/detail/json_text.h"

namespace kaz::detail {

JsonLine::JsonLine(std::string_view event) {
    add("event", event);
}

JsonLine& JsonLine::add(std::string_view name, std::string_view text) {
    begin(name);
    appendJson(text_, text);
    return *this;
}

JsonLine& JsonLine::add(std::string_view name, bool value) {
    return addPlain(name, value ? "true" : "false");
}

JsonLine& JsonLine::addPlain(std::string_view name, std::string_view json) {
    begin(name);
    text_ += json;
    return *this;
}

void JsonLine::begin(std::string_view name) {
    if (text_.size() > 1)
        text_ += ',';
    appendJson(text_, name);
    text_ += ':';
}

} // namespace kaz::detail
