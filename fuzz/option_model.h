// SPDX-License-Identifier: Apache-2.0
/// @file
/// The parser of command lines as a page of prose.
#pragma once

#include "fuzz/option_rows.h"
#include "tools/app/KazParsedArgs.h"

#include <cctype>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace reference {

using Texts = std::vector<std::string>;
using Types = std::set<int>;

inline const std::vector<OptionRow>& rows() {
    static const std::vector<OptionRow> all = readOptionRows();
    return all;
}

/// What the values of -Command stand for.
inline std::string decoded(const std::string& value) {
    if (!value.starts_with("0x") || value.size() == 2 || value.size() % 2 != 0)
        return value;
    std::string text;
    for (std::size_t i = 2; i < value.size(); i += 2) {
        if (!std::isxdigit(static_cast<unsigned char>(value[i])) ||
            !std::isxdigit(static_cast<unsigned char>(value[i + 1])))
            return "";
        text += static_cast<char>(std::stoi(value.substr(i, 2), nullptr, 16));
    }
    return text.c_str();
}

/// What a set of arguments holds after some lines, and what was said of the last one.
class ArgumentModel {
public:
    struct Meaning {
        KazArgMeaning::Kind kind = KazArgMeaning::notRead;
        const OptionRow* row = nullptr;
        int item = 0; ///< of a value or an argument
    };

    std::map<int, Texts> values;
    Texts untagged;
    Texts messages;
    std::vector<Meaning> meanings; ///< of the words of the last line
    KazArgProblem::Kind problem = KazArgProblem::none;
    int problemType = -1;
    std::size_t problemPosition = 0; ///< in argv

    const Texts& of(int type) const {
        static const Texts none;
        const auto found = values.find(type);
        return found != values.end() ? found->second : none;
    }

    bool parse(const Texts& line, const Types& required, const Types& optional, int minUntagged) {
        Types seen;
        meanings.assign(line.size(), {});
        refuse(KazArgProblem::none, -1, 0);
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (!line[i].starts_with('-')) {
                meanings[i] = {KazArgMeaning::argument, nullptr, static_cast<int>(untagged.size())};
                untagged.push_back(line[i]);
                continue;
            }
            const OptionRow* row = selectRow(rows(), line[i]);
            if (!row)
                return refuse(KazArgProblem::unknownOption, -1, i + 1);
            if (!required.count(row->type) && !optional.count(row->type))
                return refuse(KazArgProblem::unlistedOption, row->type, i + 1);
            seen.insert(row->type);
            const bool repeated = values.count(row->type) && row->repeats <= 1;
            meanings[i] = {repeated ? KazArgMeaning::repetition : KazArgMeaning::option, row};
            if (repeated)
                messages.push_back(row->text + " repeated on command line, using first value\n");
            else if (!store(*row, line, i))
                return false;
        }
        for (const int type : required)
            if (!seen.count(type))
                return refuse(KazArgProblem::requiredMissing, type, 0);
        return static_cast<int>(untagged.size()) >= minUntagged ||
               refuse(KazArgProblem::argumentsMissing, -1, 0);
    }

    void copyGlobal(const ArgumentModel& from) {
        for (const OptionRow& row : rows()) {
            const Texts added = from.of(row.type);
            if (row.isGlobal && !added.empty())
                values[row.type].insert(values[row.type].end(), added.begin(), added.end());
        }
    }

private:
    bool refuse(KazArgProblem::Kind kind, int type, std::size_t position) {
        problem = kind;
        problemType = type;
        problemPosition = position;
        return false;
    }

    bool store(const OptionRow& row, const Texts& line, std::size_t& i) {
        if (row.isSwitch) {
            const bool digit = line[i].back() == '0' || line[i].back() == '1';
            values[row.type].push_back(digit ? line[i].substr(line[i].size() - 1)
                                             : row.defaultText);
            return true;
        }
        if (i + static_cast<std::size_t>(row.values) >= line.size())
            return refuse(KazArgProblem::valuesMissing, row.type, i + 1);
        if (row.values == 0) {
            values[row.type].push_back("1");
            return true;
        }
        const auto most = static_cast<std::size_t>(row.values * row.repeats);
        if (row.repeats > 1 && values.count(row.type) && values[row.type].size() >= most) {
            messages.push_back(row.text + " argument repeated more than " +
                               std::to_string(row.repeats) + " times on command line\n");
            return refuse(KazArgProblem::tooOften, row.type, i + 1);
        }
        for (int n = 0; n < row.values; ++n) {
            ++i;
            meanings[i] = {KazArgMeaning::value, &row, n};
            values[row.type].push_back(row.text == "-Command" ? decoded(line[i]) : line[i]);
        }
        return true;
    }
};

} // namespace reference
