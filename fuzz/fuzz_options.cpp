// SPDX-License-Identifier: Apache-2.0
// Command lines: what a set of arguments holds after some of them, against the
// rules as a page of prose; and the functions that prepare argv.
#include "fuzz/argument_words.h"
#include "fuzz/harness.h"
#include "fuzz/option_model.h"
#include "testkit/director.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/arguments.h"
#include "tools/strings/KazString.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

using reference::rows;
using reference::Texts;
using reference::Types;
using Model = reference::ArgumentModel;

constexpr int typeCount = 72;

const OptionRow& anyRow(fuzz::Input& input) {
    return rows()[input.between<std::size_t>(0, rows().size() - 1)];
}

std::string word(fuzz::Input& input) {
    const OptionRow& row = anyRow(input);
    switch (input.between(0, 7)) {
    case 0:
        return input.cText(12);
    case 1:
        return row.text + input.textOf("01", 2);
    case 2:
        return row.text.substr(0, row.shortest);
    case 3:
        return row.text.substr(0, input.between<std::size_t>(1, row.text.size())) +
               input.textOf("01-xX_", 1);
    case 4:
        return "0x" + input.textOf("0123456789abcdefABCDEFg", 9);
    case 5:
        return kaz_arg_text_encode(input.cText(8).c_str()).getValue();
    case 6:
        return "-C";
    default:
        return row.text;
    }
}

/// Nearly all options, or a few.
Types someTypes(fuzz::Input& input) {
    Types types;
    const bool few = input.between(0, 7) == 7;
    if (!few)
        for (const OptionRow& row : rows())
            types.insert(row.type);
    for (int n = input.between(0, 3); n > 0; --n) {
        const int type = anyRow(input).type;
        few ? void(types.insert(type)) : void(types.erase(type));
    }
    return types;
}

std::vector<arg_type_enum> asList(const Types& types) {
    std::vector<arg_type_enum> list;
    for (const int type : types)
        list.push_back(static_cast<arg_type_enum>(type));
    list.push_back(arg_end);
    return list;
}

/// Why the line was refused, and what each word of it was read as.
void compareRecords(const KazParsedArgs& args, const Model& model, const Texts& line) {
    const KazArgProblem problem = args.getProblem();
    FUZZ_CHECK(problem.kind == model.problem);
    if (problem.kind != KazArgProblem::none) {
        FUZZ_CHECK((problem.row ? problem.row->type : -1) == model.problemType);
        FUZZ_CHECK(problem.position == static_cast<int>(model.problemPosition));
        const bool hasWord = problem.position > 0 && problem.row;
        FUZZ_CHECK(problem.isAbbreviated == (hasWord && line[model.problemPosition - 1].size() <
                                                            std::string(problem.row->text).size()));
    }
    for (int i = -1; i <= static_cast<int>(line.size()) + 1; ++i) {
        const bool isWord = i > 0 && i <= static_cast<int>(line.size());
        const auto expected =
            isWord ? model.meanings[static_cast<std::size_t>(i - 1)] : Model::Meaning();
        const KazArgMeaning meaning = args.getMeaning(i);
        FUZZ_CHECK(meaning.kind == expected.kind && meaning.item == expected.item);
        FUZZ_CHECK((meaning.row ? meaning.row->text : "") ==
                   (expected.row ? expected.row->text : ""));
    }
}

void parseOnce(fuzz::Input& input, KazParsedArgs& args, Model& model) {
    Texts line;
    for (int n = input.between(0, 15); n > 0; --n)
        line.push_back(word(input));
    // Enough of one option to come to its limit.
    if (input.between(0, 15) == 15)
        for (int n = 0; n < 101; ++n)
            line.insert(line.end(), {"-x", "-Incldir", "a"});
    const Types optional = someTypes(input);
    Types required;
    if (input.between(0, 7) == 7)
        required.insert(anyRow(input).type);
    const int minUntagged = input.between(0, 15) == 15 ? 3 : 0;
    Words words(line);
    const bool accepted = args.parse(words.argc(), words.argv(), asList(required).data(),
                                     asList(optional).data(), minUntagged);
    FUZZ_CHECK(accepted == model.parse(line, required, optional, minUntagged));
    compareRecords(args, model, line);
}

const char fallback[] = "fallback";

void expectText(const char* actual, const Texts& values, std::size_t index) {
    if (index < values.size())
        FUZZ_CHECK(actual != nullptr && actual == values[index]);
    else
        FUZZ_CHECK(actual == fallback);
}

void compareSets(const KazParsedArgs& args, const Model& model) {
    const char* defaultText = fallback;
    for (int type = 0; type <= typeCount; ++type) {
        const auto argument = static_cast<arg_type_enum>(type);
        const Texts& values = model.of(type);
        for (std::size_t i = 0; i <= values.size(); ++i)
            expectText(args.getArgText(argument, static_cast<int>(i), &defaultText), values, i);
    }
    for (const int type : {-1, 46, typeCount, 1 << 30})
        FUZZ_CHECK(args.getArgText(static_cast<arg_type_enum>(type), 0, nullptr) == nullptr);
    for (const OptionRow& row : rows()) {
        const auto argument = static_cast<arg_type_enum>(row.type);
        const Texts& values = model.of(row.type);
        FUZZ_CHECK(args.getArgText(argument, -1, &defaultText) == fallback);
        FUZZ_CHECK(args.getRepeatingText(argument, 0x7fffffff, 1, nullptr) == nullptr);
        const auto perOccurrence = static_cast<std::size_t>(row.values);
        for (std::size_t k = 0; k < perOccurrence * values.size() + 1; ++k) {
            const std::size_t occurrence = perOccurrence > 0 ? k / perOccurrence : 0;
            const std::size_t item = perOccurrence > 0 ? k % perOccurrence : 0;
            expectText(args.getRepeatingText(argument, static_cast<int>(occurrence),
                                             static_cast<int>(item), &defaultText),
                       perOccurrence > 0 ? values : Texts{}, k);
        }
        FUZZ_CHECK(args.getRepeatingText(argument, 0, row.values, nullptr) == nullptr);
    }
    for (std::size_t i = 0; i < model.untagged.size(); ++i)
        FUZZ_CHECK(args.getUntagged(static_cast<int>(i)) == model.untagged[i]);
    FUZZ_CHECK(!args.getUntagged(static_cast<int>(model.untagged.size())));
    FUZZ_CHECK(!args.getUntagged(-1));
}

void parseLines(fuzz::Input& input) {
    const moxkit::RecordingDirector director;
    KazParsedArgs args;
    Model model;
    for (int n = input.between(1, 3); n > 0; --n)
        parseOnce(input, args, model);
    FUZZ_CHECK(director.errors == model.messages);
    FUZZ_CHECK(director.messages.empty());
    compareSets(args, model);

    KazParsedArgs own;
    Model ownModel;
    ownModel.messages = model.messages;
    parseOnce(input, own, ownModel);
    own.copyGlobal(&args);
    ownModel.copyGlobal(model);
    args.copyGlobal(&args);
    model.copyGlobal(model);
    parseOnce(input, own, ownModel);
    FUZZ_CHECK(director.errors == ownModel.messages);
    compareSets(own, ownModel);
    compareSets(args, model);
}

/// A text comes through a command line as it is, whatever it holds.
void commandsComeBack(const std::string& text) {
    Words words({"-Command", kaz_arg_text_encode(text.c_str()).getValue()});
    const arg_type_enum optional[] = {arg_Command, arg_end};
    KazParsedArgs args;
    FUZZ_CHECK(args.parse(words.argc(), words.argv(), nullptr, optional, 0));
    // Nothing at all is encoded as the prefix alone, which stands for itself.
    FUZZ_CHECK(args.getArgText(arg_Command, 0, nullptr) == (text.empty() ? "0x" : text));
}

void numbersAreTold(const std::string& text) {
    const bool digits = text.find_first_not_of("0123456789") == text.npos;
    FUZZ_CHECK(text_is_integer(text.c_str()) == (digits && !text.empty()));
    FUZZ_CHECK(text_is_float(text.c_str()) == (text.find_first_not_of("0123456789.") == text.npos));
}

bool meansEditor(const std::string& argument) {
    const std::string begin = fuzz::lowered(argument.substr(0, 7));
    return begin.size() > 1 && std::string("-editor").starts_with(begin);
}

void editorIsTakenOut(fuzz::Input& input) {
    Texts line;
    for (int n = input.between(0, 6); n > 0; --n)
        line.push_back(input.flag() ? word(input) : input.textOf("-eEdDitToOrR", 9));
    Words words(line);
    int argc = words.argc();
    char* editor = nullptr;
    const int found = get_editor_from_argv(&argc, words.argv(), &editor, 0);
    std::size_t at = 0;
    while (at + 1 < line.size() && !meansEditor(line[at]))
        ++at;
    FUZZ_CHECK(found == (at + 1 < line.size() ? 1 : 0));
    if (found != 0) {
        FUZZ_CHECK(editor == line[at + 1]);
        line.erase(line.begin() + static_cast<long>(at), line.begin() + static_cast<long>(at) + 2);
    }
    FUZZ_CHECK(Texts(words.argv() + 1, words.argv() + argc) == line);
    FUZZ_CHECK(words.argv()[argc] == nullptr);
}

} // namespace

void fuzz::harness(Input& input) {
    const std::string text = input.cText(16);
    commandsComeBack(text);
    numbersAreTold(input.textOf("0123456789.-e", 5));
    editorIsTakenOut(input);
    parseLines(input);
}
