// SPDX-License-Identifier: Apache-2.0
// What a tool says of a command line, against the parser's rules as prose: each word's
// meaning, whether the line is good, and what may follow.
#include "fuzz/argument_words.h"
#include "fuzz/harness.h"
#include "fuzz/option_model.h"
#include "testkit/director.h"
#include "tools/app/KazCommandLine.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using reference::rows;
using reference::Texts;

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

/// What each word means and whether the line is good.
struct Model {
    Texts meanings;
    bool good;

    Model(const Tool& tool, Texts line) {
        reference::Types lists[2];
        for (const KazCommandLine::Option& option : tool.options)
            lists[option.required ? 0 : 1].insert(option.type);
        reference::ArgumentModel parser;
        good = parser.parse(line, lists[0], lists[1], 0);
        std::size_t behind = 0;
        if (const std::size_t at = parser.problemPosition; at > 0 && line[at - 1] == "--") {
            behind = line.size() - at;
            line.resize(at - 1);
            parser = {};
            good = parser.parse(line, lists[0], lists[1], 0);
            meanings.push_back("end of options");
        }
        std::size_t arguments = parser.untagged.size();
        for (std::size_t i = line.size(); i-- > 0;)
            meanings.insert(meanings.begin(), spelled(tool, parser, line[i], i));
        for (; behind > 0; --behind)
            meanings.push_back("argument " + std::to_string(++arguments));
        good = good && static_cast<int>(arguments) >= tool.minArguments &&
               (tool.maxArguments < 0 || static_cast<int>(arguments) <= tool.maxArguments);
    }

    static std::string spelled(const Tool& tool, const reference::ArgumentModel& parser,
                               const std::string& word, std::size_t at) {
        const auto& [kind, row, item] = parser.meanings[at];
        const OptionRow* const option = selectRow(rows(), word);
        const std::string name = option != nullptr ? rowName(*option, word) : "";
        const bool isRefused = parser.problemPosition == at + 1;
        if (isRefused && option == nullptr)
            return "unknown option";
        if (isRefused && parser.problem == KazArgProblem::unlistedOption)
            return "option " + name + ", not for this program";
        if (isRefused && parser.problem == KazArgProblem::valuesMissing)
            return "option " + name + ", its value is missing";
        if (isRefused)
            return "option " + name + ", given more than " + std::to_string(row->repeats) +
                   " times";
        if (kind == KazArgMeaning::repetition)
            return "option " + name + ", given again: ignored, and no value is taken";
        if (kind == KazArgMeaning::option && row->isSwitch)
            return "switch " + name + ", value \"" + parser.of(row->type)[0] + "\"";
        if (kind == KazArgMeaning::option)
            return "option " + name + (row->values == 0 ? ", value \"1\"" : "");
        if (kind == KazArgMeaning::value)
            return "value " + std::to_string(item + 1) + " of " + row->text +
                   (option != nullptr && tool.takes(*option)
                        ? "; it would be the option " + option->text
                        : "");
        return kind == KazArgMeaning::argument ? "argument " + std::to_string(item + 1)
                                               : "not read";
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
