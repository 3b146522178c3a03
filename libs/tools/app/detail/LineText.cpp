// SPDX-License-Identifier: Apache-2.0
// Three texts about one description: what people read, the line of the version, and JSON for
// completion and for the pages that are made of it. They are written from the same table as the
// parser reads, so an option cannot be missing in one of them.
#include "tools/app/detail/LineText.h"

#include "tools/app/detail/LineReading.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::detail {

namespace {

using Description = KazCommandLine::Description;

// Indexed by KazCommandLine::ValueKind: scripts for completion read these words.
constexpr const char* kindNames[] = {"text", "file", "directory", "number", "choice", "tool"};

std::string withValue(const LineOption& option) {
    std::string text = KazArgDescription::find(option.type)->text;
    if (option.value != nullptr)
        text.append(" ").append(option.value);
    return text;
}

/// Left and right side of the lines below the summary.
std::vector<std::pair<std::string, std::string>> detailsOf(const Description& description) {
    std::vector<std::pair<std::string, std::string>> rows;
    for (int i = 0; i < description.optionCount; ++i) {
        const LineOption& option = description.options[i];
        const KazArgDescription& row = *KazArgDescription::find(option.type);
        std::string help = option.help;
        if (const std::string shortest = shortestForm(row); shortest != row.text)
            help += " (" + shortest + ")";
        rows.emplace_back(withValue(option), help);
    }
    for (int i = 0; i < description.wordCount; ++i)
        rows.emplace_back(description.words[i].text, description.words[i].help);
    rows.emplace_back("-help", "show this and do nothing else");
    // Where the tool has an option of that name the word is the option's, as on the line.
    if (findOption(description, arg_version) == nullptr)
        rows.emplace_back("-version", "show the version and do nothing else");
    if (*description.arguments != '\0')
        rows.emplace_back("--",
                          "end the options: what follows is arguments, with \"-\" in front too");
    return rows;
}

std::string usageLine(const Description& description) {
    std::string line = std::string("usage: ") + description.program;
    for (int i = 0; i < description.optionCount; ++i) {
        const LineOption& option = description.options[i];
        line += option.required ? " " + withValue(option) : " [" + withValue(option) + "]";
    }
    for (int i = 0; i < description.wordCount; ++i)
        line.append(" [").append(description.words[i].text).append("]");
    if (*description.arguments != '\0')
        line.append(" ").append(description.arguments);
    return line;
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            result += escape;
        } else {
            result += c;
        }
    }
    return result += '"';
}

std::string field(std::string_view name, const std::string& value) {
    return quoted(name) + ": " + value;
}

std::string textField(std::string_view name, const char* value) {
    return field(name, value != nullptr ? quoted(value) : "null");
}

std::string choicesOf(const char* choices) {
    if (choices == nullptr)
        return "null";
    std::string list;
    for (std::string_view rest = choices;;) {
        const std::size_t end = rest.find('|');
        list += (list.empty() ? "[" : ", ") + quoted(rest.substr(0, end));
        if (end == rest.npos)
            return list + "]";
        rest.remove_prefix(end + 1);
    }
}

const char* yes(bool value) {
    return value ? "true" : "false";
}

std::string describedOption(const LineOption& option) {
    const KazArgDescription& row = *KazArgDescription::find(option.type);
    // The row decides which option an abbreviation means, so readers can foretell that from it.
    const auto number = &row - KazArgDescription::table();
    return "{" + textField("name", row.text) + ", " + field("row", std::to_string(number)) + ", " +
           field("shortest", quoted(shortestForm(row))) + ", " + textField("value", option.value) +
           ", " + field("values", std::to_string(row.valueCount)) + ", " +
           field("repeat", std::to_string(std::max(row.repeatLimit, 1))) + ", " +
           field("switch", yes(row.isSwitch)) + ", " + field("required", yes(option.required)) +
           ", " + textField("kind", kindNames[option.kind]) + ", " +
           field("choices", choicesOf(option.choices)) + ", " + textField("help", option.help) +
           "}";
}

} // namespace

std::string usageText(const Description& description) {
    const auto rows = detailsOf(description);
    // Bytes count as columns, which is true of ASCII names.
    std::size_t width = 0;
    for (const auto& row : rows)
        width = std::max(width, row.first.size());
    std::string text = usageLine(description) + "\n" + description.summary;
    for (const auto& [name, help] : rows)
        text.append("\n  ").append(name).append(width - name.size() + 2, ' ').append(help);
    return text;
}

std::string versionText(const Description& description) {
    return std::string(description.program) + " " + description.version + " (moxtools " +
           MOXTOOLS_VERSION + ")";
}

std::string describedText(const Description& description) {
    std::string options;
    for (int i = 0; i < description.optionCount; ++i)
        options += (i > 0 ? ", " : "") + describedOption(description.options[i]);
    const std::string arguments = "{" + textField("text", description.arguments) + ", " +
                                  field("min", std::to_string(description.minArguments)) + ", " +
                                  field("max", std::to_string(description.maxArguments)) + ", " +
                                  textField("kind", kindNames[description.argumentKind]) + "}";
    return "{" + textField("program", description.program) + ", " +
           textField("version", description.version) + ", " +
           textField("library", MOXTOOLS_VERSION) + ", " +
           textField("summary", description.summary) + ", " + field("arguments", arguments) + ", " +
           field("options", "[" + options + "]") + "}";
}

} // namespace kaz::detail
