// SPDX-License-Identifier: Apache-2.0
// What each word of a line means, in words.
#include "tools/app/detail/LineReading.h"

#include <algorithm>
#include <cstring>

namespace kaz::detail {

namespace {

std::string nameOf(const KazArgDescription& row, const char* word) {
    std::string name =
        row.text + std::string(", row ") + std::to_string(&row - KazArgDescription::table());
    if (std::strlen(word) < std::strlen(row.text))
        name += ", abbreviated";
    return name;
}

} // namespace

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
