// SPDX-License-Identifier: Apache-2.0
// The parser is asked, never imitated: it reads the line into a set of its own and says
// what each word was. A word that it does not know may be one of the tool's, which is
// taken out, or "--", where the line is cut; then it reads what is left.

#include "tools/app/detail/LineReading.h"

#include <algorithm>
#include <iterator>

namespace kaz::detail {

namespace {

// Matched whole, unlike options. The parser stops at each of them: it knows none but
// "-version", which is an option only of tools that list it.
constexpr std::string_view wordsAboutTools[] = {"-help",     "--help",     "-version",  "--version",
                                                "--explain", "--describe", "--complete"};

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

bool LineReading::isSomethingMissing() const {
    return problem_.kind == KazArgProblem::requiredMissing ||
           (problem_.kind == KazArgProblem::none && argumentCount() < description_.minArguments);
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

} // namespace kaz::detail
