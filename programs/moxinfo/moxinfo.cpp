// SPDX-License-Identifier: Apache-2.0
// moxinfo: shows a tool's configuration.
#include "common/output.h"
#include "common/printable.h"
#include "moxinfo/check.h"
#include "moxinfo/origin.h"
#include "moxinfo/product.h"

#include "tools/app/KazCommandLine.h"
#include "tools/app/KazConsoleApp.h"
#include "tools/app/arguments.h"
#include "tools/config/toolinfo.h"
#include "tools/config/vstring.h"
#include "tools/files/kazpath.h"
#include "tools/files/process.h"
#include "tools/files/tifiles.h"
#include "tools/formats/nearwords.h"
#include "tools/messages/messages.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

void offerWords(const char* option, const char* begin, KazCommandLine::Offer offer, void* data);

constexpr KazCommandLine::Option options[] = {
    {arg_toolinfo, "FILE", "start from this ToolInfo file", false, KazCommandLine::AnyFile},
    {arg_file, "FILE", "read this file too, its definitions replacing earlier ones", false,
     KazCommandLine::AnyFile},
    {arg_source, "SOURCE", "only what this file gives, or: environment, library, run-time", false,
     KazCommandLine::OfTool},
    {arg_output, "FILE", "write to this file", false, KazCommandLine::AnyFile},
    {arg_product, "WHICH",
     "what is installed, and damage to it (no protection against anybody): . for this "
     "installation, a file, or a product's name",
     false, KazCommandLine::AnyFile},
    {arg_update, nullptr, "with -product: measure its parts anew, arguments are further ones"},
    {arg_verbose, nullptr, "with names: show the source of each value; with -product: all parts"}};
constexpr KazCommandLine::Word words[] = {
    {"--origin", "where each value, or that of the names, comes from, and what it overrides"},
    {"--check", "what is wrong in the ToolInfo files, or may surprise"}};
constexpr KazCommandLine commandLine(
    {"moxinfo", MOX_VERSION,
     "Shows the configuration of the tools: the ToolInfo files and each variable with the value "
     "in\nforce, under the source that gives it. What is shown can itself be read as a ToolInfo "
     "file.\nWith names only their values; a template is a text with ${name} references to "
     "expand.",
     options, std::size(options), "[name | template ...]", 0, -1, KazCommandLine::OfTool, words,
     std::size(words)},
    offerWords);

struct Variable {
    std::string name;
    std::string value;
    std::string source; ///< a file name or one of the words of the option -source
};

std::string sourceOf(const char* name) {
    KazString file;
    switch (TI_EnvVsource(name, &file)) {
    case KazEnvironment:
        return "environment";
    case KazRunTime:
        return "run-time";
    case KazDefined:
        return "library";
    case KazFile:
        return file.getValue();
    case KazUndefined:
        break;
    }
    return "nowhere";
}

std::vector<Variable> allVariables() {
    std::vector<Variable> variables;
    TI_Vwalk(
        [](const char* name, void* data) {
            static_cast<std::vector<Variable>*>(data)->push_back(
                {name, onOneLine(TI_EnvVcont(name)), sourceOf(name)});
        },
        &variables);
    return variables;
}

/// The sources in the order in which they are asked, the files as they were read.
std::vector<std::string> allSources(const std::vector<Variable>& variables) {
    std::vector<std::string> sources{"environment", "run-time", "library"};
    for (int i = 0; KazString name = TI_Vfile(i); ++i)
        sources.push_back(name.getValue());
    for (const Variable& variable : variables)
        if (std::find(sources.begin(), sources.end(), variable.source) == sources.end())
            sources.push_back(variable.source);
    return sources;
}

bool isWordForSource(const std::string& text) {
    return text == "environment" || text == "run-time" || text == "library";
}

/// What the option -source names, as the variables carry it; "" for everything.
std::string wantedSource() {
    const char* wanted = kaz_arg_text(arg_source, 0, nullptr);
    if (wanted == nullptr || isWordForSource(wanted))
        return wanted != nullptr ? wanted : "";
    return kazFullPath(wanted).getValue();
}

/// The further file that is read, under its full name; "" for none.
std::string furtherFile() {
    const char* file = kaz_arg_text(arg_file, 0, nullptr);
    return file != nullptr ? kazFullPath(file).getValue() : "";
}

bool isRead(const std::string& file) {
    if (file == furtherFile())
        return true;
    for (int i = 0; KazString name = TI_Vfile(i); ++i)
        if (file == kazFullPath(name).getValue())
            return true;
    return false;
}

/// False, and told, when -source names what gives nothing.
bool isSourceGood() {
    const std::string wanted = wantedSource();
    if (wanted.empty() || isWordForSource(wanted) || isRead(wanted))
        return true;
    const char* const word = kaz_arg_text(arg_source, 0, nullptr);
    KazStringColl sources;
    for (const char* source : {"environment", "library", "run-time"})
        sources.add(source);
    commandLine.complain("option -source: %s is no file that is read, nor environment, library or "
                         "run-time%s",
                         printable(word).c_str(), kazDidYouMean(word, sources).getValue());
    return false;
}

void showAll(LineOutput& output) {
    const std::string wanted = wantedSource();
    if (wanted.empty()) {
        output.line("% ToolInfo files:");
        for (int i = 0; KazString name = TI_Vfile(i); ++i)
            output.line("%   " + onOneLine(name));
    }
    const std::vector<Variable> variables = allVariables();
    for (const std::string& source : allSources(variables)) {
        if (!wanted.empty() && wanted != source && wanted != kazFullPath(source.c_str()).getValue())
            continue;
        bool isFirst = true;
        for (const Variable& variable : variables) {
            if (variable.source != source)
                continue;
            if (isFirst)
                output.line("% from " + onOneLine(source.c_str()));
            isFirst = false;
            output.line(variable.name + "=" + variable.value);
        }
    }
}

KazStringColl allNames() {
    KazStringColl names;
    TI_Vwalk([](const char* name, void* data) { static_cast<KazStringColl*>(data)->add(name); },
             &names);
    return names;
}

void complainOfUndefined(const char* name) {
    print_err("moxinfo: %s is not defined%s", printable(name).c_str(),
              kazDidYouMean(name, allNames()).getValue());
}

/// False, and reported, when there is no such variable.
bool showVariable(LineOutput& output, const char* name) {
    const char* value = TI_EnvVcont(name);
    if (value == nullptr) {
        complainOfUndefined(name);
        return false;
    }
    if (kaz_arg_text(arg_verbose, 0, nullptr) != nullptr)
        output.line("% from " + onOneLine(sourceOf(name).c_str()));
    output.line(value);
    return true;
}

void showExpansion(LineOutput& output, const char* text) {
    char* expanded = nullptr;
    vstring_sub(text, &expanded);
    const std::unique_ptr<char, decltype(&std::free)> owner(expanded, &std::free);
    output.line(expanded);
}

bool showArguments(LineOutput& output) {
    bool allThere = true;
    // Plain names are variables too; "ti." in front works as in every tool.
    vstring_push_lookup_func(TI_EnvVcont);
    for (int i = 0; const char* argument = kaz_arg_get_untagged(i); ++i) {
        if (std::string(argument).find("${") != std::string::npos)
            showExpansion(output, argument);
        else
            allThere = showVariable(output, argument) && allThere;
    }
    vstring_pop_lookup_func();
    return allThere;
}

bool readFurtherFile() {
    const std::string file = furtherFile();
    if (file.empty() || TI_V_user_file(file.c_str(), true) == 0)
        return true;
    print_err("moxinfo: cannot read %s", printable(kaz_arg_text(arg_file, 0, nullptr)).c_str());
    return false;
}

/// False when a variable is empty or, which is reported, not defined.
bool showOrigin(LineOutput& output, const Configuration& configuration, const char* name) {
    const std::vector<std::string> lines = originOf(configuration, name);
    for (const std::string& line : lines)
        output.line(line);
    if (lines.empty())
        complainOfUndefined(name);
    const char* const value = TI_EnvVcont(name);
    return value != nullptr && *value != '\0';
}

bool showOrigins(LineOutput& output, const Configuration& configuration) {
    bool allThere = true;
    for (int i = 0; const char* name = kaz_arg_get_untagged(i); ++i)
        allThere = showOrigin(output, configuration, name) && allThere;
    if (kaz_arg_get_untagged(0) == nullptr)
        for (const Variable& variable : allVariables())
            showOrigin(output, configuration, variable.name.c_str());
    return allThere;
}

/// Sources, or variables with their values.
void offerWords(const char* option, const char*, KazCommandLine::Offer offer, void* data) {
    if (*option != '\0') {
        for (const char* source : {"environment", "library", "run-time"})
            offer(source, nullptr, data);
        for (int i = 0; KazString name = TI_Vfile(i); ++i)
            offer(kazHostPath(name), nullptr, data);
        return;
    }
    for (const Variable& variable : allVariables())
        offer(variable.name.c_str(), printable(variable.value).c_str(), data);
}

/// What is wrong with a request for product information; "" when nothing is.
std::string productProblem() {
    const char* argument = kaz_arg_get_untagged(0);
    if (kaz_arg_text(arg_update, 0, nullptr) == nullptr)
        return argument != nullptr ? "what is " + printable(argument) + " for?" : "";
    return kaz_arg_text(arg_product, 0, nullptr) == nullptr ? "-update needs -product" : "";
}

/// What does not go with "--origin" or "--check"; "" when nothing is wrong.
std::string wordProblem() {
    const bool isCheck = commandLine.isGiven("--check"), isOrigin = commandLine.isGiven("--origin");
    if (!isCheck && !isOrigin)
        return "";
    if (isCheck && isOrigin)
        return "--origin and --check exclude one another";
    const std::string word = isCheck ? "--check" : "--origin";
    for (const auto& [type, text] :
         {std::pair(arg_source, "-source"), {arg_product, "-product"}, {arg_update, "-update"}})
        if (kaz_arg_text(type, 0, nullptr) != nullptr)
            return "option " + std::string(text) + " does not go with " + word;
    const char* const argument = kaz_arg_get_untagged(0);
    return isCheck && argument != nullptr
               ? "there is no place for the argument " + printable(argument)
               : "";
}

std::string outputFile() {
    const char* file = kaz_arg_text(arg_output, 0, nullptr);
    return file != nullptr ? _TI_hm(file) : "";
}

/// Without the configuration, which an installation that is looked at may lack.
int runProduct(const char* which) {
    const std::string file = productFile(which);
    if (file.empty()) {
        print_err("moxinfo: nobody knows where %s is installed", printable(which).c_str());
        return 1;
    }
    if (kaz_arg_text(arg_update, 0, nullptr) != nullptr) {
        std::vector<std::string> more;
        for (int i = 0; const char* argument = kaz_arg_get_untagged(i); ++i)
            more.emplace_back(argument);
        const std::string target = outputFile();
        return updateProduct(file, more, target.empty() ? file : target) ? 0 : 1;
    }
    LineOutput output(outputFile());
    const bool good = showProduct(file, kaz_arg_text(arg_verbose, 0, nullptr) != nullptr, output);
    return output.finish() && good ? 0 : 1;
}

/// Everything that is asked of the variables, once they are read.
bool showVariables(LineOutput& output) {
    if (commandLine.isGiven("--check"))
        return showFindings(Configuration(furtherFile()), output);
    if (commandLine.isGiven("--origin"))
        return showOrigins(output, Configuration(furtherFile()));
    if (kaz_arg_get_untagged(0) != nullptr)
        return showArguments(output);
    showAll(output);
    return true;
}

/// What is wrong with the command line beyond its words; "" when nothing is.
std::string problem() {
    const bool isProduct = kaz_arg_text(arg_product, 0, nullptr) != nullptr ||
                           kaz_arg_text(arg_update, 0, nullptr) != nullptr;
    const std::string ofWords = wordProblem();
    return ofWords.empty() && isProduct ? productProblem() : ofWords;
}

class MoxInfo : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
            return status;
        if (const std::string text = problem(); !text.empty()) {
            commandLine.complain("%s", text.c_str());
            return KazCommandLine::wrongUsage;
        }
        if (const char* which = kaz_arg_text(arg_product, 0, nullptr))
            return runProduct(which);
        if (const char* file = kaz_arg_text(arg_toolinfo, 0, nullptr))
            TI_putenv("ToolInfo", kazFullPath(file));
        // Before the further file, which comes after the others.
        TI_Vinit();
        if (!readFurtherFile())
            return 1;
        if (!isSourceGood())
            return KazCommandLine::wrongUsage;
        LineOutput output(outputFile());
        const bool good = showVariables(output);
        return output.finish() && good ? 0 : 1;
    }
};

MoxInfo moxinfo;

} // namespace
