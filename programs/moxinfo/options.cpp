// SPDX-License-Identifier: Apache-2.0
// What goes together on the line is checked here, after the parser has found each option good by
// itself. A problem is one sentence about the first thing that is wrong.
#include "moxinfo/options.h"

#include "common/printable.h"
#include "common/trace_options.h"
#include "moxinfo/variables.h"

#include "tools/app/KazCommandLine.h"
#include "tools/app/arguments.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/formats/nearwords.h"

#include <iterator>
#include <utility>

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
    {arg_verbose, nullptr, "with names: show the source of each value; with -product: all parts"},
    traceTopics,
    traceFile};
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

bool isWordForSource(const std::string& text) {
    return text == "environment" || text == "run-time" || text == "library";
}

bool isRead(const std::string& file) {
    // It is no part of the chain, and yet a source.
    if (file == furtherFile())
        return true;
    for (int i = 0; KazString name = TI_Vfile(i); ++i)
        if (file == kazFullPath(name).getValue())
            return true;
    return false;
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
    // With -update arguments are further parts; without it nothing takes them.
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

/// What is wrong with the command line beyond its words; "" when nothing is.
std::string problem() {
    const bool isProduct = kaz_arg_text(arg_product, 0, nullptr) != nullptr ||
                           kaz_arg_text(arg_update, 0, nullptr) != nullptr;
    const std::string ofWords = wordProblem();
    return ofWords.empty() && isProduct ? productProblem() : ofWords;
}

} // namespace

int readOptions(int argc, char** argv) {
    if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
        return status;
    const std::string text = problem();
    if (text.empty())
        return KazCommandLine::run;
    commandLine.complain("%s", text.c_str());
    return KazCommandLine::wrongUsage;
}

bool isAsked(const char* word) {
    return commandLine.isGiven(word);
}

std::string wantedSource() {
    const char* wanted = kaz_arg_text(arg_source, 0, nullptr);
    // A file of such a name is asked for with a directory in front.
    if (wanted == nullptr || isWordForSource(wanted))
        return wanted != nullptr ? wanted : "";
    return kazFullPath(wanted).getValue();
}

std::string furtherFile() {
    const char* file = kaz_arg_text(arg_file, 0, nullptr);
    return file != nullptr ? kazFullPath(file).getValue() : "";
}

std::string outputFile() {
    const char* file = kaz_arg_text(arg_output, 0, nullptr);
    return file != nullptr ? _TI_hm(file) : "";
}

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
