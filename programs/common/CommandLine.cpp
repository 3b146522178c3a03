// SPDX-License-Identifier: Apache-2.0
#include "common/CommandLine.h"

#include "common/printable.h"
#include "tools/app/KazApp.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/arguments.h"
#include "tools/messages/messages.h"

#include <algorithm>
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
    const KazParsedArgs& args = *KazApp::getInstance()->getParsedArgs();
    const KazArgProblem::Kind kind = args.getProblem().kind;
    const bool isMissing =
        kind == KazArgProblem::requiredMissing || kind == KazArgProblem::argumentsMissing;
    complain(problemOf(args, argv) + (isMissing ? swallowedOptions(args, argc, argv) : ""));
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

std::string CommandLine::problemOf(const KazParsedArgs& args, char** argv) const {
    const KazArgProblem problem = args.getProblem();
    const std::string word = printable(problem.position > 0 ? argv[problem.position] : "");
    if (problem.kind == KazArgProblem::unknownOption)
        return "unknown option " + word;
    if (problem.kind == KazArgProblem::argumentsMissing)
        return std::string("arguments are missing: ") + arguments;
    if (problem.row == nullptr)
        return "the command line cannot be used";
    const KazArgDescription& row = *problem.row;
    const std::string text = row.text;
    switch (problem.kind) {
    case KazArgProblem::unlistedOption:
        return problem.isAbbreviated ? word + " means " + text + ", which is not for this program"
                                     : "option " + text + " is not for this program";
    case KazArgProblem::valuesMissing:
        if (row.valueCount == 1)
            return "option " + text + " needs a value";
        return "option " + text + " needs " + std::to_string(row.valueCount) + " values";
    case KazArgProblem::tooOften:
        return "option " + text + " is given more than " + std::to_string(row.repeatLimit) +
               " times";
    default:
        return "option " + withValue(*find(row.type)) + " is missing";
    }
}

/// Whoever has forgotten a value finds the next option in its place. A line for each
/// word that was read as a value and would be an option of this program.
std::string CommandLine::swallowedOptions(const KazParsedArgs& args, int argc, char** argv) const {
    std::string lines;
    for (int i = 1; i < argc; ++i) {
        const KazArgMeaning meaning = args.getMeaning(i);
        const KazArgDescription* row = KazArgDescription::match(argv[i]);
        if (meaning.kind == KazArgMeaning::value && row != nullptr && find(row->type) != nullptr)
            lines += std::string("\n") + program + ": note: " + printable(argv[i]) +
                     " was taken as the value of " + meaning.row->text;
    }
    return lines;
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
