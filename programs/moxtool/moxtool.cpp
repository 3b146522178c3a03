// SPDX-License-Identifier: Apache-2.0
/// What belongs to no single tool of the suite: the first word chooses.

#include "commands.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

namespace {

struct Command {
    const char* name;
    const char* help;
    int (*run)(int argc, char** argv);
};

constexpr Command commands[] = {
    {"completion", "print the script that completes command lines in a shell", completionCommand},
    {"doctor", "say whether all that the suite needs is as it should be", doctorCommand},
    {"new", "make a project for a tool", newCommand},
    {"replay", "run recorded tools again and compare what they say", replayCommand},
    {"sweep", "run a command with each of its allocations and file calls failing", sweepCommand}};

/// The commands, and behind "completion" a shell and then programs.
void offerCommands(const char* option, const char*, KazCommandLine::Offer offer, void* data) {
    const char* const first = kaz_arg_get_untagged(0);
    if (*option != '\0')
        return;
    if (first == nullptr) {
        for (const Command& command : commands)
            offer(command.name, command.help, data);
    } else if (std::string_view(first) == "completion") {
        if (kaz_arg_get_untagged(1) == nullptr)
            for (const char* const shell : {"bash", "zsh", "fish"})
                offer(shell, nullptr, data);
        else
            for (const char* const program : suitePrograms)
                offer(program, nullptr, data);
    }
}

constexpr KazCommandLine commandLine(
    {"moxtool", MOX_VERSION, "Does what belongs to no single tool of the suite.", nullptr, 0,
     "completion ... | doctor | new ... | replay ... | sweep ...", 1, -1, KazCommandLine::OfTool},
    offerCommands);

const Command* find(const char* name) {
    const auto* const found =
        std::find_if(std::begin(commands), std::end(commands), [name](const Command& command) {
            return std::string_view(name) == command.name;
        });
    return found != std::end(commands) ? found : nullptr;
}

class MoxTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        const char* const word = argc > 1 ? argv[1] : "";
        // A command reads the rest of the line by itself.
        if (const Command* const command = find(word))
            return command->run(argc - 1, argv + 1);
        if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
            return status;
        KazStringColl names;
        for (const Command& command : commands)
            names.add(command.name);
        commandLine.complain("unknown command %s%s", kazPrintable(word).getValue(),
                             kazDidYouMean(word, names).getValue());
        return KazCommandLine::wrongUsage;
    }
};

MoxTool theTool;

} // namespace
