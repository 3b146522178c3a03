// SPDX-License-Identifier: Apache-2.0
/// What belongs to no single tool of the suite: the first word chooses.

#include "commands.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

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

/// The commands; what follows one of them is its own business.
void offerCommands(const char* option, const char*, KazCommandLine::Offer offer, void* data) {
    if (*option == '\0' && kaz_arg_get_untagged(0) == nullptr)
        for (const Command& command : commands)
            offer(command.name, command.help, data);
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

/// The number of a word of the line, or -1.
int wordNumber(std::string_view text) {
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : -1;
}

/// A line that asks about a command ("moxtool --explain new x", and the shells'
/// "moxtool --complete 1 new") is what the command is asked: "moxtool new --explain x".
void askTheCommand(int argc, char** argv) {
    constexpr std::string_view questions[] = {"-help", "--help", "--explain", "--describe"};
    if (argc > 2 && find(argv[2]) != nullptr &&
        std::find(std::begin(questions), std::end(questions), argv[1]) != std::end(questions))
        std::swap(argv[1], argv[2]);
    if (argc < 4 || std::string_view(argv[1]) != "--complete" || find(argv[3]) == nullptr)
        return;
    const int number = wordNumber(argv[2]);
    if (number < 1)
        return;
    static std::string numberBehind;
    numberBehind = std::to_string(number - 1);
    std::rotate(argv + 1, argv + 3, argv + 4);
    argv[3] = numberBehind.data();
}

class MoxTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        askTheCommand(argc, argv);
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
