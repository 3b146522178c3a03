// SPDX-License-Identifier: Apache-2.0
/// @file
/// The command line of a companion program.
#pragma once

#include "tools/app/KazArgDescription.h"

#include <span>
#include <string>

class KazParsedArgs;

/// Which of the suite's shared options a program takes, and what its other
/// arguments are. Parses, and explains what is wrong with a command line.
///
///     constexpr CommandLine::Option options[] = {{arg_output, "FILE", "write to FILE"}};
///     constexpr CommandLine commandLine("moxinfo", "[name ...]", "Shows variables.", options);
///     if (!commandLine.parse(argc, argv))
///         return CommandLine::wrongUsage;
class CommandLine {
public:
    /// The exit status for a command line that cannot be used.
    static constexpr int wrongUsage = 2;

    struct Option {
        arg_type_enum type;
        const char* value; ///< What its value is called; null for one without value.
        const char* help;
        bool required = false;
    };

    /// Texts and options are kept as they are, not copied. @p minArguments is how many
    /// arguments that are no option there must be.
    constexpr CommandLine(const char* program, const char* arguments, const char* summary,
                          std::span<const Option> options, int minArguments = 0)
        : program(program),
          arguments(arguments),
          summary(summary),
          options(options),
          minArguments(minArguments) {}

    /// Parses into the application's argument set (see kaz_arg_parse). On failure
    /// says on the error channel what is wrong and how the program is used.
    bool parse(int argc, char** argv) const;

    /// Prints @p problem and the usage text on the error channel. What it quotes is
    /// printable.
    void complain(const std::string& problem) const;

private:
    const Option* find(arg_type_enum type) const;
    std::string problemOf(const KazParsedArgs& args, char** argv) const;
    std::string swallowedOptions(const KazParsedArgs& args, int argc, char** argv) const;
    std::string usage() const;

    const char* program;
    const char* arguments;
    const char* summary;
    std::span<const Option> options;
    int minArguments;
};
