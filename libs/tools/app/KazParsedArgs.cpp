// SPDX-License-Identifier: Apache-2.0
// One pass over the line, which the table of options drives. Values are added to what the set
// holds already, and stay when the line is refused further on: a tool that goes on all the same
// sees what was given up to there. What is known of each position is kept beside, for those who
// explain the line.
//
// An option that was given twice counts with its first values; whatever follows the repetition is
// read as arguments.
#include "tools/app/KazParsedArgs.h"

#include "tools/app/KazToolsContext.h"
#include "tools/app/detail/command_text.h"
#include "tools/messages/messages.h"
#include "tools/strings/KazString.h"

#include <algorithm>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

// The last one of the enumeration, which is not the last row of the table.
constexpr int typeCount = arg_filter + 1;

bool isType(arg_type_enum type) {
    return type >= 0 && type < typeCount;
}

using TypeSet = std::bitset<typeCount>;

/// The options of a list; what is no option is left out.
TypeSet typesOf(const arg_type_enum* list) {
    TypeSet types;
    for (; list != nullptr && *list != arg_end; ++list)
        if (isType(*list))
            types.set(static_cast<std::size_t>(*list));
    return types;
}

/// Collections of strings own their elements by reference count.
void holdStrings(KazColl& strings) {
    strings.setCheckIn(KazString::checkIn);
    strings.setCheckOut(KazString::checkOut);
}

void append(KazColl& strings, const char* text) {
    KazString copy(text);
    strings.add(copy.disguise());
}

/// An empty string is stored as null.
const char* textAt(const KazColl& strings, int index) {
    const void* text = strings.getAt(index);
    return text != nullptr ? static_cast<const char*>(text) : "";
}

const char* missing(const char** defaultText) {
    return defaultText != nullptr ? *defaultText : nullptr;
}

} // namespace

/// What is known of the last line.
struct KazParsedArgs::Record {
    KazArgProblem problem;
    std::vector<KazArgMeaning> meanings; ///< by position
};

/// The command line being read, and how far.
struct KazParsedArgs::Line {
    int argc;
    char** argv;
    const arg_type_enum* required;
    TypeSet accepted;
    std::vector<KazArgMeaning>& meanings;
    bool isQuiet;
    TypeSet seen{};
    int position = 1;

    const char* current() const { return argv[position]; }
    void note(KazArgMeaning meaning) { meanings[static_cast<std::size_t>(position)] = meaning; }
    bool holdsValues(int count) const { return count < argc - position; }
};

// Collections are made for the options that are given: a line has few of the seventy.
KazParsedArgs::KazParsedArgs() : values_(new KazColl* [typeCount] {}) {
    holdStrings(untagged_);
}

KazParsedArgs::~KazParsedArgs() {
    for (int i = 0; i < typeCount; ++i)
        delete values_[i];
    delete[] values_;
    delete record_;
}

bool KazParsedArgs::parse(int argc, char** argv, const arg_type_enum* required,
                          const arg_type_enum* optional, int minUntagged) {
    return read(argc, argv, required, optional, minUntagged, false);
}

bool KazParsedArgs::examine(int argc, char** argv, const arg_type_enum* required,
                            const arg_type_enum* optional, int minUntagged) {
    return read(argc, argv, required, optional, minUntagged, true);
}

void KazParsedArgs::addUntagged(const char* text) {
    append(untagged_, text);
}

bool KazParsedArgs::read(int argc, char** argv, const arg_type_enum* required,
                         const arg_type_enum* optional, int minUntagged, bool isQuiet) {
    if (record_ == nullptr)
        record_ = new Record;
    // The record tells of the last line only, while the values of all lines add up.
    record_->problem = {};
    record_->meanings.assign(static_cast<std::size_t>(std::max(argc, 0)), {});
    Line line{argc,   argv, required, typesOf(required) | typesOf(optional), record_->meanings,
              isQuiet};
    for (; line.position < argc; ++line.position) {
        const char* argument = line.current();
        if (argument == nullptr)
            continue;
        if (argument[0] == '-') {
            if (!parseOption(line))
                return false;
            continue;
        }
        append(untagged_, argument);
        line.note({KazArgMeaning::argument, nullptr, untagged_.getSize() - 1});
    }
    if (!hasRequiredArguments(line))
        return false;
    // Arguments of earlier lines count, too, as the set holds them all.
    return untagged_.getSize() >= minUntagged ||
           refuse(line, KazArgProblem::argumentsMissing, nullptr);
}

/// Keeps why the parse fails; the result is that of parse.
bool KazParsedArgs::refuse(const Line& line, KazArgProblem::Kind kind,
                           const KazArgDescription* row) {
    const bool isAtEnd = line.position >= line.argc;
    const bool isAbbreviated =
        !isAtEnd && row != nullptr && std::strlen(line.current()) < std::strlen(row->text);
    record_->problem = {kind, row, isAtEnd ? 0 : line.position, isAbbreviated};
    return false;
}

KazArgProblem KazParsedArgs::getProblem() const {
    return record_ != nullptr ? record_->problem : KazArgProblem();
}

KazArgMeaning KazParsedArgs::getMeaning(int position) const {
    const auto at = static_cast<std::size_t>(position);
    const bool isKnown = record_ != nullptr && position >= 0 && at < record_->meanings.size();
    return isKnown ? record_->meanings[at] : KazArgMeaning();
}

bool KazParsedArgs::parseOption(Line& line) {
    const KazArgDescription* row = KazArgDescription::match(line.current());
    if (row == nullptr)
        return refuse(line, KazArgProblem::unknownOption, nullptr);
    // Before the repetition: an option that the tool does not take is a mistake each time.
    if (!isLegalArgument(row->type, line))
        return refuse(line, KazArgProblem::unlistedOption, row);
    if (hasValues(row->type) && row->repeatLimit <= 1) {
        // The values of the repetition stay on the line as plain arguments.
        line.note({KazArgMeaning::repetition, row, 0});
        if (!line.isQuiet)
            print_err("%s repeated on command line, using first value\n", row->text);
        return true;
    }
    line.note({KazArgMeaning::option, row, 0});
    return assignText(*row, line);
}

/// An option that the tool does not take counts as seen, too.
bool KazParsedArgs::isLegalArgument(arg_type_enum type, Line& line) const {
    const auto bit = static_cast<std::size_t>(type);
    line.seen[bit] = true;
    return line.accepted[bit];
}

bool KazParsedArgs::hasRequiredArguments(const Line& line) {
    const arg_type_enum* type = line.required;
    for (; type != nullptr && *type != arg_end; ++type)
        if (!isType(*type) || !line.seen[static_cast<std::size_t>(*type)])
            return refuse(line, KazArgProblem::requiredMissing, KazArgDescription::find(*type));
    return true;
}

bool KazParsedArgs::assignText(const KazArgDescription& row, Line& line) {
    if (row.isSwitch)
        return assignSwitch(row, line.current());
    if (!line.holdsValues(row.valueCount))
        return refuse(line, KazArgProblem::valuesMissing, &row);
    // No switch and no value: that it was given is all there is to keep.
    if (row.repeatLimit < 2 && row.valueCount == 0) {
        addValue(row.type, "1");
        return true;
    }
    return assignValues(row, line);
}

bool KazParsedArgs::assignSwitch(const KazArgDescription& row, const char* argument) {
    // No text of a switch holds a digit, so the first one found is the one at the end.
    const char* digit = std::strchr(argument, '0');
    if (digit == nullptr)
        digit = std::strchr(argument, '1');
    addValue(row.type, digit != nullptr ? digit : row.defaultText);
    return true;
}

bool KazParsedArgs::assignValues(const KazArgDescription& row, Line& line) {
    // Values are counted and not occurrences, because one occurrence may take several.
    const int stored = hasValues(row.type) ? values_[row.type]->getSize() : 0;
    if (row.repeatLimit >= 2 && stored + row.valueCount > row.valueCount * row.repeatLimit) {
        if (!line.isQuiet)
            print_err("%s argument repeated more than %d times on command line\n", row.text,
                      row.repeatLimit);
        return refuse(line, KazArgProblem::tooOften, &row);
    }
    for (int i = 0; i < row.valueCount; ++i) {
        ++line.position;
        addValue(row.type, line.current());
        line.note({KazArgMeaning::value, &row, i});
    }
    return true;
}

bool KazParsedArgs::hasValues(arg_type_enum type) const {
    // A collection stays empty when memory ran out for its first value.
    return isType(type) && values_[type] != nullptr && values_[type]->getSize() > 0;
}

KazColl& KazParsedArgs::valuesOf(arg_type_enum type) {
    if (values_[type] == nullptr) {
        values_[type] = new KazColl;
        holdStrings(*values_[type]);
    }
    return *values_[type];
}

void KazParsedArgs::addValue(arg_type_enum type, const char* text) {
    if (type == arg_Command)
        append(valuesOf(type), kaz::detail::decodeCommandText(text));
    else
        append(valuesOf(type), text);
}

const char* KazParsedArgs::getArgText(arg_type_enum type, int index,
                                      const char** defaultText) const {
    if (!hasValues(type) || index < 0 || index >= values_[type]->getSize())
        return missing(defaultText);
    return textAt(*values_[type], index);
}

const char* KazParsedArgs::getRepeatingText(arg_type_enum type, int occurrence, int item,
                                            const char** defaultText) const {
    const KazArgDescription* row = KazArgDescription::find(type);
    if (row == nullptr || !hasValues(type) || item >= row->valueCount)
        return missing(defaultText);
    // The product of two int may leave the range of int.
    const std::int64_t index = static_cast<std::int64_t>(occurrence) * row->valueCount + item;
    if (index < 0 || index >= values_[type]->getSize())
        return missing(defaultText);
    return textAt(*values_[type], static_cast<int>(index));
}

const char* KazParsedArgs::getUntagged(int index) const {
    KazToolsContext::getInstance();
    if (index < 0 || index >= untagged_.getSize())
        return nullptr;
    return textAt(untagged_, index);
}

void KazParsedArgs::copyGlobal(const KazParsedArgs* from) {
    const KazArgDescription* row = KazArgDescription::table();
    for (; from != nullptr && row->type != arg_end; ++row) {
        if (!row->isGlobal || !from->hasValues(row->type))
            continue;
        const KazColl& source = *from->values_[row->type];
        const int count = source.getSize(); // Fixed now: both sets may be the same.
        for (int i = 0; i < count; ++i)
            valuesOf(row->type).add(source.getAt(i));
    }
}
