// SPDX-License-Identifier: Apache-2.0
/// @file
/// A command line that explains itself.
#pragma once

#include "tools/app/KazArgDescription.h"
#include "tools/export.h"

/// Which of the suite's shared options a tool takes, and what its other arguments are,
/// said once: parsing, usage, errors, explanations and completion all come from it.
///
/// @code
///   constexpr KazCommandLine::Option options[] = {
///       {arg_projdir, "DIR", "project directory", true, KazCommandLine::AnyDirectory},
///       {arg_verbose, nullptr, "tell each file"}};
///   constexpr KazCommandLine commandLine({"copy", "1.2", "Copies a project.", options, 2});
///   ...
///   if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
///       return status;
/// @endcode
///
/// Every tool with such a line knows the words "-help", "--help", "-version" (unless it
/// takes that option itself), "--version", "--explain", "--describe" and "--complete",
/// and ends its options at "--": what follows is arguments, whatever it looks like. These
/// words count where the parser looks for an option, and never as a value.
class KAZ_API KazCommandLine {
public:
    /// What a value may be. It is offered when a shell completes the line; WholeNumber
    /// and OneOf are also checked.
    enum ValueKind : int {
        AnyText,
        AnyFile,
        AnyDirectory,
        WholeNumber, ///< decimal digits, a sign in front; it fits 64 bits
        OneOf,       ///< one of Option::choices
        OfTool       ///< the tool's Completer knows
    };

    /// An option that the tool takes: a row of the shared table.
    struct Option {
        arg_type_enum type;            ///< which row
        const char* value;             ///< what its value is called; null for one without value
        const char* help;              ///< one line
        bool required = false;         ///< a line without it is refused
        ValueKind kind = AnyText;      ///< what its value may be
        const char* choices = nullptr; ///< "a|b|c", for OneOf
    };

    /// A word of the tool's own that begins with two dashes, as "--plan". It takes no value.
    struct Word {
        const char* text; ///< "--plan"
        const char* help; ///< one line
    };

    /// All texts and tables are kept as they are, not copied; none may be null but
    /// @p options and @p words, where their counts are 0.
    struct Description {
        const char* program;              ///< its name, which usage and errors begin with
        const char* version;              ///< for "-version" and "--version"
        const char* summary;              ///< what the tool does, a sentence
        const Option* options;            ///< what it takes, in the order in which usage shows it
        int optionCount;                  ///< elements of @p options
        const char* arguments = "";       ///< what the other arguments are called, "[name ...]"
        int minArguments = 0;             ///< fewer are refused
        int maxArguments = -1;            ///< -1: any number
        ValueKind argumentKind = AnyText; ///< what they may be
        const Word* words = nullptr;      ///< words of its own
        int wordCount = 0;                ///< elements of @p words
    };

    /// Takes a candidate for what is being typed; @p help may be null. The texts are copied.
    using Offer = void (*)(const char* word, const char* help, void* data);
    /// Offers what the value of @p option (its full text; "" for an argument) may be and
    /// begins with @p begin; of what it offers, the rest is left out. The line as far as it
    /// is typed is in the application's argument set (kaz_arg_text). Messages that it causes
    /// are shown to nobody, and no fatal error ends anything.
    using Completer = void (*)(const char* option, const char* begin, Offer offer, void* data);

    /// What parse() returns when the tool is to do its work.
    static constexpr int run = -1;
    /// The exit status for a command line that cannot be used.
    static constexpr int wrongUsage = 2;

    /// Keeps @p description, whose texts and tables have to outlive this, and @p completer,
    /// which is asked for values and arguments of kind OfTool. Nothing is looked at before
    /// parse().
    explicit constexpr KazCommandLine(const Description& description, Completer completer = nullptr)
        : description_(description), completer_(completer) {}

    /// Parses into the application's argument set (see kaz_arg_parse), or does what one of
    /// the words above asks for, or says in a line on the error channel what is wrong.
    /// @return run, or the status to end with: 0 when a word was obeyed, 1 when what it
    /// shows cannot be written to standard output, wrongUsage
    int parse(int argc, char** argv) const;

    /// Shows an error of the tool's own in the same form: its problem, and how to get
    /// help. @p format is a printf format.
    void complain(const char* format, ...) const KAZ_PRINTF(2, 3);

    /// Whether the last line that was parsed held @p word, one of Description::words.
    bool isGiven(const char* word) const;
    /// Whether it held "--plan": the tool says what it would do, and does none of it. A
    /// tool that cannot do so does not list the word, which is then an unknown option.
    bool isPlan() const { return isGiven("--plan"); }

private:
    Description description_;
    Completer completer_;
};
