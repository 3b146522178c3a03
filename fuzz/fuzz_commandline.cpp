// SPDX-License-Identifier: Apache-2.0
// What a tool says of a command line, against the parser's rules as prose: each word's
// meaning, whether the line is good, and what may follow.
#include "fuzz/argument_words.h"
#include "fuzz/harness.h"
#include "fuzz/option_rows.h"
#include "testkit/director.h"
#include "tools/app/KazCommandLine.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

const std::vector<OptionRow>& rows() {
    static const std::vector<OptionRow> all = readOptionRows();
    return all;
}

/// A tool that takes some of the options.
struct Tool {
    std::vector<KazCommandLine::Option> options;
    int minArguments;
    int maxArguments;

    explicit Tool(fuzz::Input& input) {
        for (int n = input.between(0, 6); n > 0; --n) {
            const OptionRow& row = rows()[input.between<std::size_t>(0, rows().size() - 1)];
            const auto type = static_cast<arg_type_enum>(row.type);
            if (!takes(row))
                options.push_back({type, row.values > 0 ? "V" : nullptr, "help", input.flag()});
        }
        minArguments = input.between(0, 2);
        maxArguments = input.between(-1, 3);
    }
    bool takes(const OptionRow& row) const {
        return std::any_of(options.begin(), options.end(),
                           [&row](const auto& option) { return option.type == row.type; });
    }
    KazCommandLine line() const {
        return KazCommandLine({"tool", "1", "summary", options.data(),
                               static_cast<int>(options.size()), "args", minArguments,
                               maxArguments});
    }
};

std::string rowName(const OptionRow& row, const std::string& word) {
    const auto number = &row - rows().data();
    return row.text + ", row " + std::to_string(number) +
           (word.size() < row.text.size() ? ", abbreviated" : "");
}

/// The rules: what each word means and whether the line is good.
struct Model {
    Texts meanings;
    bool good = true;
    std::map<int, int> given;
    int arguments = 0;

    Model(const Tool& tool, const Texts& line) {
        std::size_t i = 0;
        for (; i < line.size() && good; ++i) {
            if (line[i] == "--") {
                meanings.push_back("end of options");
                for (++i; i < line.size(); ++i)
                    meanings.push_back("argument " + std::to_string(++arguments));
                break;
            }
            if (line[i].starts_with('-'))
                option(tool, line, i);
            else
                meanings.push_back("argument " + std::to_string(++arguments));
        }
        meanings.resize(line.size(), "not read");
        for (const KazCommandLine::Option& option : tool.options)
            good = good && (!option.required || given[option.type] > 0);
        good = good && arguments >= tool.minArguments &&
               (tool.maxArguments < 0 || arguments <= tool.maxArguments);
    }

    void refuse(const std::string& meaning) {
        meanings.push_back(meaning);
        good = false;
    }

    void option(const Tool& tool, const Texts& line, std::size_t& i) {
        const OptionRow* const row = selectRow(rows(), line[i]);
        if (row == nullptr)
            return refuse("unknown option");
        const std::string name = rowName(*row, line[i]);
        if (!tool.takes(*row))
            return refuse("option " + name + ", not for this program");
        int& times = given[row->type];
        if (times > 0 && row->repeats <= 1)
            return meanings.push_back("option " + name +
                                      ", given again: ignored, and no value is taken");
        const auto values = static_cast<std::size_t>(row->values);
        if (row->isSwitch) {
            const std::size_t zero = line[i].find('0');
            const std::size_t digit = zero != line[i].npos ? zero : line[i].find('1');
            ++times;
            const std::string value =
                digit != line[i].npos ? line[i].substr(digit) : row->defaultText;
            return meanings.push_back("switch " + name + ", value \"" + value + "\"");
        }
        if (line.size() - i - 1 < values)
            return refuse("option " + name + ", its value is missing");
        if (row->repeats >= 2 && times >= row->repeats)
            return refuse("option " + name + ", given more than " + std::to_string(row->repeats) +
                          " times");
        ++times;
        meanings.push_back("option " + name + (values == 0 ? ", value \"1\"" : ""));
        for (std::size_t k = 1; k <= values; ++k) {
            const OptionRow* const other = selectRow(rows(), line[++i]);
            meanings.push_back("value " + std::to_string(k) + " of " + row->text +
                               (other != nullptr && tool.takes(*other)
                                    ? "; it would be the option " + other->text
                                    : ""));
        }
    }
};

std::string anyWord(fuzz::Input& input) {
    const std::string text = rows()[input.between<std::size_t>(0, rows().size() - 1)].text;
    switch (input.between(0, 7)) {
    case 0:
        return "--";
    case 1:
        return input.text(6);
    case 2:
        return text.substr(0, input.between<std::size_t>(0, text.size()));
    case 3:
        return text + input.pick(std::string_view("01=-"));
    case 4:
        return "value";
    default:
        return text;
    }
}

Texts linesOf(const KazCommandLine& line, Texts words, int& status) {
    const moxkit::RecordingDirector director;
    Words argv(std::move(words));
    status = line.parse(argv.argc(), argv.argv());
    FUZZ_CHECK(director.errors.empty());
    return director.messages;
}

bool isPrintable(const std::string& text) {
    return std::none_of(text.begin(), text.end(),
                        [](unsigned char c) { return c < ' ' || c == 0x7F; });
}

void all(fuzz::Input input) {
    const Tool tool(input);
    const KazCommandLine line = tool.line();
    Texts words;
    while (!input.empty() && words.size() < 40)
        words.push_back(anyWord(input));

    int status = 0;
    Texts asked{"--explain"};
    asked.insert(asked.end(), words.begin(), words.end());
    const Texts said = linesOf(line, asked, status);
    // The parser reads texts up to their NUL.
    for (std::string& word : words)
        word = word.c_str();
    const Model model(tool, words);
    FUZZ_CHECK(said.size() == words.size() + 1);
    for (std::size_t i = 0; i < words.size(); ++i) {
        FUZZ_CHECK(said[i].substr(0, said[i].find('\t')) == std::to_string(i + 1));
        FUZZ_CHECK(said[i].substr(said[i].rfind('\t') + 1) == model.meanings[i]);
    }
    FUZZ_CHECK((status == 0) == model.good);
    FUZZ_CHECK((said.back() == "result\tok") == model.good);
    FUZZ_CHECK(isPrintable(said.back().substr(7)));

    Texts question{"--complete", std::to_string(words.empty() ? 0 : words.size() - 1)};
    question.insert(question.end(), words.begin(), words.end());
    const std::string typed = words.empty() ? "" : words.back();
    for (const std::string& candidate : linesOf(line, question, status)) {
        const std::string word = candidate.substr(0, candidate.find('\t'));
        FUZZ_CHECK(word.size() >= typed.size());
        const OptionRow* const row = selectRow(rows(), word);
        FUZZ_CHECK(word == "-help" || word == "-version" || (row != nullptr && tool.takes(*row)));
    }
}

} // namespace

void fuzz::harness(Input& input) {
    Failures::whole(input, all);
}
