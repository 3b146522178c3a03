// SPDX-License-Identifier: Apache-2.0
// The parser is asked, never imitated: it reads the line into a set of its own and says
// what each word was. A word that it does not know may be one of the tool's, which is
// taken out, or "--", where the line is cut; then it reads what is left.

#include "tools/app/detail/LineReading.h"

#include "tools/formats/detail/NearWords.h"
#include "tools/formats/encode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <utility>

namespace kaz::detail {

namespace {

// Matched whole, unlike options. The parser stops at each of them: it knows none but
// "-version", which is an option only of tools that list it.
constexpr std::string_view wordsAboutTools[] = {"-help",     "--help",     "-version",  "--version",
                                                "--explain", "--describe", "--complete"};

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

std::string nameOf(const KazArgDescription& row, const char* word) {
    std::string name =
        row.text + std::string(", row ") + std::to_string(&row - KazArgDescription::table());
    if (std::strlen(word) < std::strlen(row.text))
        name += ", abbreviated";
    return name;
}

const char* textOf(const LineOption& option) {
    return KazArgDescription::find(option.type)->text;
}

} // namespace

const LineOption* findOption(const LineDescription& description, arg_type_enum type) {
    const LineOption* const end = description.options + description.optionCount;
    const LineOption* const found = std::find_if(
        description.options, end, [type](const LineOption& option) { return option.type == type; });
    return found != end ? found : nullptr;
}

std::string shortestForm(const KazArgDescription& row) {
    std::string text = row.text;
    // The length in the table does not tell: an earlier row may take the same abbreviation.
    for (std::size_t length = 1; length < text.size(); ++length)
        if (KazArgDescription::match(text.substr(0, length).c_str()) == &row)
            return text.substr(0, length);
    return text;
}

bool isAboutTool(const LineDescription& description, std::string_view word) {
    // A tool that has taken "-version" for an option of its own keeps it, value and all.
    if (word == "-version" && findOption(description, arg_version) != nullptr)
        return false;
    return std::find(std::begin(wordsAboutTools), std::end(wordsAboutTools), word) !=
           std::end(wordsAboutTools);
}

LineReading::LineReading(const LineDescription& description, int argc, char** argv)
    : description_(description) {
    for (int i = 0; i < description.optionCount; ++i)
        (description.options[i].required ? required_ : optional_)
            .push_back(description.options[i].type);
    required_.push_back(arg_end);
    optional_.push_back(arg_end);
    // Positions are kept apart from the words, as own words and nulls leave gaps between them.
    for (int i = 0; i < argc; ++i) {
        all_.push_back(argv[i]);
        if (argv[i] == nullptr && i > 0)
            continue; // passed over, as the parser does
        words_.push_back(argv[i]);
        positions_.push_back(i);
    }
    // One reading for each own word of the line: the parser keeps no state that could go on behind
    // a stop, and an own word may be a value of the option in front, which only it knows.
    do
        read();
    while (takeOwnWord());
    wordPosition_ = nextWordAboutTool();
}

// The set is new each time, since a reading adds to what its set holds. No arguments are
// demanded here: how many there must be is judged without the parser, after "--" is known.
void LineReading::read() {
    args_ = std::make_unique<KazParsedArgs>();
    args_->examine(static_cast<int>(words_.size()), words_.data(), required_.data(),
                   optional_.data(), 0);
    problem_ = args_->getProblem();
}

/// Whether the word that the parser stopped at was none of its business.
bool LineReading::takeOwnWord() {
    if (problem_.kind != KazArgProblem::unknownOption)
        return false;
    const auto at = problem_.position;
    const std::string word = words_[static_cast<std::size_t>(at)];
    // Only words_ is cut. positions_ stays longer, which meaningOf has to look at.
    if (word == "--") {
        isEnded_ = true;
        rest_.assign(words_.begin() + at + 1, words_.end());
        words_.resize(static_cast<std::size_t>(at));
        return true;
    }
    const auto* const end = description_.words + description_.wordCount;
    if (std::none_of(description_.words, end,
                     [&word](const KazCommandLine::Word& own) { return word == own.text; }))
        return false;
    // The word stays where it is, so that problem_ goes on pointing at it.
    if (std::find(given_.begin(), given_.end(), word) != given_.end()) {
        repeatedWord_ = word;
        return false;
    }
    given_.push_back(word);
    words_.erase(words_.begin() + at);
    positions_.erase(positions_.begin() + at);
    return true;
}

/// Behind a mistake the parser begins anew with the next word, so that who asks for help
/// gets it wherever the mistake is.
int LineReading::nextWordAboutTool() const {
    KazArgProblem problem = problem_;
    std::size_t at = 0;
    // The position grows with each turn, so this ends. Position 0 is a problem of the whole line,
    // behind which there is no word to begin at.
    while (problem.kind != KazArgProblem::none && problem.position > 0) {
        at += static_cast<std::size_t>(problem.position);
        if (std::string_view(words_[at]) == "--")
            return 0;
        if (isAboutTool(description_, words_[at]))
            return positions_[at];
        // The mistake itself takes the place of the program's name, which the parser passes over.
        KazParsedArgs further;
        std::vector<char*> words(words_.begin() + static_cast<std::ptrdiff_t>(at), words_.end());
        further.examine(static_cast<int>(words.size()), words.data(), required_.data(),
                        optional_.data(), 0);
        problem = further.getProblem();
    }
    return 0;
}

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
    for (int i = 0; const char* value = args_->getArgText(option.type, i, nullptr); ++i) {
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

bool LineReading::isSomethingMissing() const {
    return problem_.kind == KazArgProblem::requiredMissing ||
           (problem_.kind == KazArgProblem::none && argumentCount() < description_.minArguments);
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

std::vector<const char*> LineReading::arguments() const {
    std::vector<const char*> result;
    for (std::size_t i = 1; i < words_.size(); ++i)
        if (args_->getMeaning(static_cast<int>(i)).kind == KazArgMeaning::argument)
            result.push_back(words_[i]);
    result.insert(result.end(), rest_.begin(), rest_.end());
    return result;
}

int LineReading::argumentCount() const {
    return static_cast<int>(arguments().size());
}

int LineReading::timesGiven(arg_type_enum type) const {
    int times = 0;
    for (std::size_t i = 1; i < words_.size(); ++i) {
        const KazArgMeaning meaning = args_->getMeaning(static_cast<int>(i));
        if (meaning.kind == KazArgMeaning::option && meaning.row->type == type)
            ++times;
    }
    return times;
}

const LineOption* LineReading::optionInNeed(int& item) const {
    if (problem_.kind != KazArgProblem::valuesMissing)
        return nullptr;
    // The option is the last one read, so all words behind it are its values.
    item = static_cast<int>(words_.size()) - problem_.position - 1;
    return findOption(description_, problem_.row->type);
}

std::string LineReading::meaningOf(int position) const {
    const auto at = std::find(positions_.begin(), positions_.end(), position) - positions_.begin();
    // No word of the parser's: the program itself, a null, an own word, or "--" and beyond.
    if (at == 0 || static_cast<std::size_t>(at) >= words_.size()) {
        // Behind "--" everything is an argument; an own word is what it is.
        const char* const word = all_[static_cast<std::size_t>(position)];
        // By address, as the same text may stand on both sides of "--".
        const auto behind = std::find(rest_.begin(), rest_.end(), word);
        if (word != nullptr && behind != rest_.end())
            return "argument " + std::to_string(argumentCount() - (rest_.end() - behind) + 1);
        if (word == nullptr || std::string_view(word) != "--")
            return word != nullptr && std::find(given_.begin(), given_.end(), word) != given_.end()
                       ? std::string("option ") + word
                       : "not read";
        return "end of options";
    }
    const char* const word = words_[static_cast<std::size_t>(at)];
    const KazArgMeaning meaning = args_->getMeaning(static_cast<int>(at));
    // Before the meaning: the parser notes an option before it misses the values.
    if (problem_.position == at && problem_.kind != KazArgProblem::none)
        return problemMeaning(word);
    switch (meaning.kind) {
    case KazArgMeaning::option:
        return optionMeaning(*meaning.row, word);
    case KazArgMeaning::repetition:
        return "option " + nameOf(*meaning.row, word) +
               ", given again: ignored, and no value is taken";
    case KazArgMeaning::value:
        return valueMeaning(meaning, word);
    case KazArgMeaning::argument:
        return "argument " + std::to_string(meaning.item + 1);
    case KazArgMeaning::notRead:
        break;
    }
    return "not read";
}

std::string LineReading::optionMeaning(const KazArgDescription& row, const char* word) const {
    if (row.isSwitch) {
        // A "0" anywhere comes first, as where the parser stores the value.
        const char* digit = std::strpbrk(word, "01");
        if (const char* const zero = std::strchr(word, '0'))
            digit = zero;
        const char* const value = digit != nullptr ? digit : row.defaultText;
        return "switch " + nameOf(row, word) + ", value \"" + value + "\"";
    }
    return "option " + nameOf(row, word) + (row.valueCount == 0 ? ", value \"1\"" : "");
}

std::string LineReading::valueMeaning(const KazArgMeaning& meaning, const char* word) const {
    std::string text = "value " + std::to_string(meaning.item + 1) + " of " + meaning.row->text;
    const KazArgDescription* const row = KazArgDescription::match(word);
    if (row != nullptr && findOption(description_, row->type) != nullptr)
        text += std::string("; it would be the option ") + row->text;
    return text;
}

std::string LineReading::problemMeaning(const char* word) const {
    switch (problem_.kind) {
    case KazArgProblem::unlistedOption:
        return "option " + nameOf(*problem_.row, word) + ", not for this program";
    case KazArgProblem::valuesMissing:
        return "option " + nameOf(*problem_.row, word) + ", its value is missing";
    case KazArgProblem::tooOften:
        return "option " + nameOf(*problem_.row, word) + ", given more than " +
               std::to_string(problem_.row->repeatLimit) + " times";
    default:
        return repeatedWord_.empty() ? "unknown option"
                                     : "option " + repeatedWord_ + ", given more than 1 times";
    }
}

} // namespace kaz::detail
