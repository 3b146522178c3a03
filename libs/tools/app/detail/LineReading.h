// SPDX-License-Identifier: Apache-2.0
/// @file
/// A command line as the parser reads it, held against what a tool takes.
#pragma once

#include "tools/app/KazArgProblem.h"
#include "tools/app/KazCommandLine.h"
#include "tools/app/KazParsedArgs.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::detail {

using LineDescription = KazCommandLine::Description;
using LineOption = KazCommandLine::Option;

/// The tool's row of @p type, or null.
const LineOption* findOption(const LineDescription& description, arg_type_enum type);

/// The shortest abbreviation that selects the row; its whole text when there is none.
std::string shortestForm(const KazArgDescription& row);

/// One of the words that every tool knows, exactly as @p word spells it and as far as
/// the tool does not take it as an option.
bool isAboutTool(const LineDescription& description, std::string_view word);

/// Reads a line with the shared parser, shows nothing, and keeps nothing of it outside
/// this object. The texts are the caller's and outlive it.
class LineReading {
public:
    LineReading(const LineDescription& description, int argc, char** argv);

    /// The words that the parser is to have, without the tool's own words, up to "--".
    std::vector<char*>& words() { return words_; }
    /// Whether "--" ended the options, and the arguments behind it.
    bool isEnded() const { return isEnded_; }
    const std::vector<const char*>& rest() const { return rest_; }
    /// The tool's own words that were given.
    const std::vector<std::string>& given() const { return given_; }

    /// Where in argv the first word about the tool stands that the parser meets as an
    /// option, right or wrong as the line may be; 0 for none.
    int wordPosition() const { return wordPosition_; }

    /// What is wrong with the line, with a hint where there is one; "" for nothing.
    std::string problem() const;
    /// Whether a value or an argument is missing: then some word may have been taken for one.
    bool isSomethingMissing() const;
    /// "WORD was taken as the value of OPTION" for each that the tool would take as an option.
    std::vector<std::string> swallowedOptions() const;

    /// What argv[@p position] means, in words; "not read" for what came too late.
    std::string meaningOf(int position) const;

    /// The option whose value the word behind the line would be, and which one, from 0;
    /// null when it would be none.
    const LineOption* optionInNeed(int& item) const;
    /// How often the line gives the option.
    int timesGiven(arg_type_enum type) const;
    int argumentCount() const;

private:
    void read();
    bool takeOwnWord();
    int nextWordAboutTool() const;
    std::string parserProblem() const;
    std::string ownProblem() const;
    std::string valueProblem(const LineOption& option) const;
    std::string unlistedProblem(const KazArgDescription& row, const std::string& word) const;
    std::string hintFor(const std::string& word) const;
    std::string optionMeaning(const KazArgDescription& row, const char* word) const;
    std::string valueMeaning(const KazArgMeaning& meaning, const char* word) const;
    std::string problemMeaning(const char* word) const;
    std::vector<const char*> arguments() const;

    const LineDescription& description_;
    std::vector<arg_type_enum> required_, optional_;
    std::vector<char*> all_;     ///< the whole line
    std::vector<char*> words_;   ///< what the parser reads; [0] is the program
    std::vector<int> positions_; ///< of these in the whole line
    std::vector<const char*> rest_;
    std::vector<std::string> given_;
    bool isEnded_ = false;
    std::string repeatedWord_; ///< an own word that was given twice
    std::unique_ptr<KazParsedArgs> args_;
    KazArgProblem problem_;
    int wordPosition_ = 0;
};

} // namespace kaz::detail
