#include "common/CommandLine.h"

#include "tools/app/arguments.h"
#include "tools/messages/messages.h"

#include <algorithm>
#include <set>
#include <vector>

namespace {

/// The shortest abbreviation that selects the row.
std::string shortest(const KazArgDescription& row) {
    std::string text = row.text;
    for (std::size_t length = 1; length < text.size(); ++length)
        if (KazArgDescription::match(text.substr(0, length).c_str()) == &row)
            return text.substr(0, length);
    return text;
}

std::string withValue(const CommandLine::Option& option) {
    std::string text = KazArgDescription::find(option.type)->text;
    if (option.value != nullptr)
        text.append(" ").append(option.value);
    return text;
}

} // namespace

bool CommandLine::parse(int argc, char** argv) const {
    std::vector<arg_type_enum> required, optional;
    for (const Option& option : options)
        (option.required ? required : optional).push_back(option.type);
    required.push_back(arg_end);
    optional.push_back(arg_end);
    if (kaz_arg_parse(argc, argv, required.data(), optional.data(), minArguments, false))
        return true;
    complain(problemOf(argc, argv));
    return false;
}

void CommandLine::complain(const std::string& problem) const {
    print_err("%s: %s\n%s", program, problem.c_str(), usage().c_str());
}

const CommandLine::Option* CommandLine::find(arg_type_enum type) const {
    const auto found = std::find_if(options.begin(), options.end(),
                                    [type](const Option& option) { return option.type == type; });
    return found != options.end() ? &*found : nullptr;
}

/// Walks the arguments as the parser does, which itself only says that it failed.
std::string CommandLine::problemOf(int argc, char** argv) const {
    std::set<arg_type_enum> seen;
    int plain = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (!argument.starts_with('-')) {
            ++plain;
            continue;
        }
        const KazArgDescription* row = KazArgDescription::match(argv[i]);
        if (row == nullptr)
            return "unknown option " + argument;
        if (find(row->type) == nullptr)
            return std::string("option ") + row->text + " is not for this program";
        const bool repeated = !seen.insert(row->type).second;
        if (repeated && row->repeatLimit < 2)
            continue;
        if (i + row->valueCount >= argc)
            return std::string("option ") + row->text + " needs a value";
        i += row->valueCount;
    }
    for (const Option& option : options)
        if (option.required && seen.count(option.type) == 0)
            return "option " + withValue(option) + " is missing";
    if (plain < minArguments)
        return std::string("arguments are missing: ") + arguments;
    return "the command line cannot be used";
}

std::string CommandLine::usage() const {
    std::size_t width = 0;
    for (const Option& option : options)
        width = std::max(width, withValue(option).size());
    std::string line = std::string("usage: ") + program;
    std::string details;
    for (const Option& option : options) {
        const std::string text = withValue(option);
        line += option.required ? " " + text : " [" + text + "]";
        details += "  " + text + std::string(width - text.size(), ' ') + "  " + option.help;
        const KazArgDescription& row = *KazArgDescription::find(option.type);
        if (shortest(row) != row.text)
            details += " (" + shortest(row) + ")";
        details += '\n';
    }
    if (*arguments != '\0')
        line.append(" ").append(arguments);
    line.append("\n").append(summary);
    return details.empty() ? line : line + "\n" + details.substr(0, details.size() - 1);
}
