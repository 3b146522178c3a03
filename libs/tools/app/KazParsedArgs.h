// SPDX-License-Identifier: Apache-2.0
/// @file
/// A set of parsed command-line arguments.
#pragma once

#include "tools/app/KazArgDescription.h"
#include "tools/app/KazArgProblem.h"
#include "tools/containers/KazColl.h"
#include "tools/export.h"

/// The options and plain arguments of one command line, queried by option.
///
/// Values persist over calls of parse: a second call adds to what the first
/// has found, and options that already have values count as repeated. Texts
/// that are handed out belong to the object and live as long as it does.
class KAZ_API KazParsedArgs {
public:
    KazParsedArgs();
    ~KazParsedArgs();
    KazParsedArgs(const KazParsedArgs&) = delete;
    KazParsedArgs& operator=(const KazParsedArgs&) = delete;

    /// Reads argv[1] to argv[argc - 1] (argv[0] is never looked at; a null
    /// entry is passed over).
    ///
    /// Only options of @p required and @p optional are accepted; both lists end
    /// with arg_end and may be null. An option that may be given once keeps its
    /// first value: a repetition is reported on the error channel, and what
    /// follows it is read as plain arguments.
    ///
    /// @return true when every argument was accepted, every required option was
    /// given in this call, and the set holds at least @p minUntagged plain
    /// arguments. An unknown or unwanted option, or one whose values are cut
    /// short, ends the parse at once with false; what was read before it stays.
    /// Only repetitions are reported, the rest is for the tool to tell; getProblem()
    /// and getMeaning() know it.
    bool parse(int argc, char** argv, const arg_type_enum* required, const arg_type_enum* optional,
               int minUntagged);

    /// Reads the line as parse() does and shows nothing: for a set of its own that is asked
    /// what the line would mean.
    bool examine(int argc, char** argv, const arg_type_enum* required,
                 const arg_type_enum* optional, int minUntagged);

    /// Appends a plain argument, whatever it looks like. Null counts as "".
    void addUntagged(const char* text);

    /// Why the last parse() returned false. Without a problem after one that returned
    /// true, before the first, and after one that an exception ended.
    KazArgProblem getProblem() const;

    /// What the last parse() read argv[@p position] as. "Not read" outside the line.
    KazArgMeaning getMeaning(int position) const;

    /// The value at @p index of @p type; "" for an empty one. When the option
    /// was not given or has no such value: @p *defaultText, or null when
    /// @p defaultText is null.
    const char* getArgText(arg_type_enum type, int index, const char** defaultText) const;

    /// Value @p item of occurrence @p occurrence, both counted from 0, of an
    /// option that takes values. Anything missing as in getArgText.
    const char* getRepeatingText(arg_type_enum type, int occurrence, int item,
                                 const char** defaultText) const;

    /// The plain argument at @p index, "" for an empty one, null out of range.
    /// Makes sure that the tools context exists.
    const char* getUntagged(int index) const;

    /// How many plain arguments there are.
    int getUntaggedCount() const { return untagged_.getSize(); }

    /// Appends all values that @p from holds for the process-wide options.
    /// A null @p from copies nothing.
    void copyGlobal(const KazParsedArgs* from);

private:
    struct Line;
    struct Record;

    bool read(int argc, char** argv, const arg_type_enum* required, const arg_type_enum* optional,
              int minUntagged, bool isQuiet);
    bool refuse(const Line& line, KazArgProblem::Kind kind, const KazArgDescription* row);
    bool isLegalArgument(arg_type_enum type, Line& line) const;
    bool hasRequiredArguments(const Line& line);
    bool assignText(const KazArgDescription& row, Line& line);
    bool assignSwitch(const KazArgDescription& row, const char* argument);
    bool assignValues(const KazArgDescription& row, Line& line);
    bool parseOption(Line& line);

    bool hasValues(arg_type_enum type) const;
    KazColl& valuesOf(arg_type_enum type);
    void addValue(arg_type_enum type, const char* text);

    KazColl** values_;
    KazColl untagged_;
    Record* record_ = nullptr; ///< of the last parse; null before the first
};
