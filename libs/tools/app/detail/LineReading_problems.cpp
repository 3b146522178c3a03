// SPDX-License-Identifier: Apache-2.0
// What is wrong with a line, in words. The parser's mistakes come first, in its order; what it lets
// through is looked at behind them.
#include "tools/app/detail/LineReading.h"
#include "tools/formats/detail/NearWords.h"
#include "tools/formats/encode.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <utility>

namespace kaz::detail {

namespace {

std::string shown(const char* word) {
    return kazPrintable(word).getValue();
}

bool isWholeNumber(std::string_view text) {
    // from_chars takes a minus sign and no plus; "+-1" must not become -1.
    if (!text.empty() && text[0] == '+' && text.substr(1, 1) != "-")
        text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

std::vector<std::string> choicesOf(const LineOption& option) {
    std::vector<std::string> choices;
    std::string_view text = option.choices != nullptr ? option.choices : "";
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('|'), text.size());
        choices.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return choices;
}

// Distance 0 is equality but for ASCII case, as in the hints.
bool begins(std::string_view text, std::string_view beginning) {
    return text.size() >= beginning.size() &&
           editDistance(text.substr(0, beginning.size()), beginning, 0) == 0;
}

const char* textOf(const LineOption& option) {
    return KazArgDescription::find(option.type)->text;
}

} // namespace

std::string LineReading::problem() const {
    if (!repeatedWord_.empty())
        return "option " + repeatedWord_ + " is given more than 1 times";
    return problem_.kind != KazArgProblem::none ? parserProblem() : ownProblem();
}

std::string LineReading::parserProblem() const {
    const char* const word =
        problem_.position > 0 ? words_[static_cast<std::size_t>(problem_.position)] : "";
    if (problem_.row == nullptr)
        return "unknown option " + shown(word) + hintFor(word);
    // Only an unknown option has no row; argumentsMissing cannot come, as none are demanded.
    const KazArgDescription& row = *problem_.row;
    std::string text = std::string("option ") + row.text;
    switch (problem_.kind) {
    case KazArgProblem::unlistedOption:
        return unlistedProblem(row, word);
    case KazArgProblem::valuesMissing:
        if (row.valueCount == 1)
            return text + " needs a value";
        return text + " needs " + std::to_string(row.valueCount) + " values";
    case KazArgProblem::tooOften:
        return text + " is given more than " + std::to_string(row.repeatLimit) + " times";
    default:
        break;
    }
    const LineOption* const option = findOption(description_, row.type);
    if (option != nullptr && option->value != nullptr)
        text.append(" ").append(option->value);
    return text + " is missing";
}

std::string LineReading::unlistedProblem(const KazArgDescription& row,
                                         const std::string& word) const {
    if (!problem_.isAbbreviated)
        return std::string("option ") + row.text + " is not for this program" + hintFor(word);
    std::vector<std::string> words;
    for (int i = 0; i < description_.optionCount; ++i) {
        std::string text = textOf(description_.options[i]);
        const std::string shortest =
            shortestForm(*KazArgDescription::find(description_.options[i].type));
        // More than three would hide the message in front of them.
        if (!begins(text, word) || words.size() >= 3)
            continue;
        if (shortest != text)
            text.append(" (").append(shortest).append(")");
        words.push_back(std::move(text));
    }
    return shown(word.c_str()) + " means " + row.text + ", which is not for this program" +
           hintOf(words);
}

/// Near words of an option; "-system=plant" is near to "-system plant".
std::string LineReading::hintFor(const std::string& word) const {
    std::vector<std::string> candidates;
    for (int i = 0; i < description_.optionCount; ++i)
        candidates.emplace_back(textOf(description_.options[i]));
    for (int i = 0; i < description_.wordCount; ++i)
        candidates.emplace_back(description_.words[i].text);
    // Of the words about tools those that people type; the others are for scripts.
    candidates.emplace_back("-help");
    if (findOption(description_, arg_version) == nullptr)
        candidates.emplace_back("-version");
    // Other suites join option and value. The value would make every option look far away.
    const std::size_t equals = std::min(word.find('='), word.size());
    std::vector<std::string> words =
        nearWords(std::string_view(word).substr(0, equals), candidates);
    // With two candidates nobody knows whose value it was meant to be.
    if (equals < word.size() && words.size() == 1) {
        const KazArgDescription* const row = KazArgDescription::match(words[0].c_str());
        if (row != nullptr && row->valueCount > 0)
            words[0] += " " + shown(word.c_str() + equals + 1);
    }
    return hintOf(words);
}

/// What the parser lets through.
std::string LineReading::ownProblem() const {
    const std::vector<const char*> given = arguments();
    const auto count = static_cast<int>(given.size());
    if (count < description_.minArguments)
        return std::string("arguments are missing: ") + description_.arguments;
    if (description_.maxArguments >= 0 && count > description_.maxArguments)
        return "there is no place for the argument " +
               shown(given[static_cast<std::size_t>(description_.maxArguments)]);
    for (int i = 0; i < description_.optionCount; ++i)
        if (std::string problem = valueProblem(description_.options[i]); !problem.empty())
            return problem;
    return {};
}

std::string LineReading::valueProblem(const LineOption& option) const {
    if (option.kind != KazCommandLine::WholeNumber && option.kind != KazCommandLine::OneOf)
        return {};
    const std::vector<std::string> choices = choicesOf(option);
    // All occurrences: the first bad value of an option that may be repeated is the one to name.
    int i = 0;
    while (const char* const value = args_->getArgText(option.type, i++, nullptr)) {
        if (option.kind == KazCommandLine::WholeNumber) {
            if (!isWholeNumber(value))
                return std::string("option ") + textOf(option) + ": " + shown(value) +
                       " is not a whole number";
        } else if (std::find(choices.begin(), choices.end(), value) == choices.end()) {
            return std::string("option ") + textOf(option) + ": " + shown(value) + " is none of " +
                   listOf(choices, "and") + hintOf(nearWords(value, choices));
        }
    }
    return {};
}

std::vector<std::string> LineReading::swallowedOptions() const {
    std::vector<std::string> notes;
    for (std::size_t i = 1; i < words_.size(); ++i) {
        const KazArgMeaning meaning = args_->getMeaning(static_cast<int>(i));
        const KazArgDescription* const row = KazArgDescription::match(words_[i]);
        // Options that the tool does not take are left out: there the value was surely meant.
        if (meaning.kind == KazArgMeaning::value && row != nullptr &&
            findOption(description_, row->type) != nullptr)
            notes.push_back(shown(words_[i]) + " was taken as the value of " + meaning.row->text);
    }
    return notes;
}

} // namespace kaz::detail
