// SPDX-License-Identifier: Apache-2.0
// Variables are shown as lines that a ToolInfo file may hold, with their sources in comments:
// what is shown can be read again. Order and sources come from the library, so the answer is the
// one that tools get.
#include "moxinfo/variables.h"

#include "common/printable.h"
#include "moxinfo/origin.h"

#include "tools/app/arguments.h"
#include "tools/config/toolinfo.h"
#include "tools/config/vstring.h"
#include "tools/files/kazpath.h"
#include "tools/formats/nearwords.h"
#include "tools/messages/messages.h"

#include <algorithm>

namespace {

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

/// The sources in the order in which they are asked, the files as they were read.
std::vector<std::string> allSources(const std::vector<Variable>& variables) {
    std::vector<std::string> sources{"environment", "run-time", "library"};
    for (int i = 0; KazString name = TI_Vfile(i); ++i)
        sources.push_back(name.getValue());
    // Files that were read besides are not in the chain.
    for (const Variable& variable : variables)
        if (std::find(sources.begin(), sources.end(), variable.source) == sources.end())
            sources.push_back(variable.source);
    return sources;
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
bool showVariable(LineOutput& output, const char* name, bool withSource) {
    const char* value = TI_EnvVcont(name);
    if (value == nullptr) {
        complainOfUndefined(name);
        return false;
    }
    if (withSource)
        output.line("% from " + onOneLine(sourceOf(name).c_str()));
    // Alone and as it is, since scripts take it for the value.
    output.line(value);
    return true;
}

void showExpansion(LineOutput& output, const char* text) {
    output.line(vstring_sub(text).getValue());
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

} // namespace

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

void showAll(LineOutput& output, const std::string& wanted) {
    if (wanted.empty()) {
        output.line("% ToolInfo files:");
        for (int i = 0; KazString name = TI_Vfile(i); ++i)
            output.line("%   " + onOneLine(name));
    }
    const std::vector<Variable> variables = allVariables();
    for (const std::string& source : allSources(variables)) {
        // Files are asked for by full paths, while the chain holds them as their links spell them.
        if (!wanted.empty() && wanted != source && wanted != kazFullPath(source.c_str()).getValue())
            continue;
        // Sources without a variable get no heading. Each source looks through all variables, which
        // a chain of ten files keeps cheap.
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

bool showArguments(LineOutput& output, bool withSources) {
    bool allThere = true;
    // Plain names are variables too; "ti." in front works as in every tool.
    vstring_push_lookup_func(TI_EnvVcont);
    for (int i = 0; i < kaz_arg_untagged_count(); ++i) {
        const char* const argument = kaz_arg_get_untagged(i);
        if (std::string(argument).find("${") != std::string::npos)
            showExpansion(output, argument);
        else
            // The call comes first: each argument is shown, whatever the one before has met.
            allThere = showVariable(output, argument, withSources) && allThere;
    }
    // Or expansions of the library's own would ask it, too.
    vstring_pop_lookup_func();
    return allThere;
}

bool showOrigins(LineOutput& output, const Configuration& configuration) {
    bool allThere = true;
    for (int i = 0; i < kaz_arg_untagged_count(); ++i)
        allThere = showOrigin(output, configuration, kaz_arg_get_untagged(i)) && allThere;
    // All of them: one that is empty is nobody's failure then.
    if (kaz_arg_get_untagged(0) == nullptr)
        for (const Variable& variable : allVariables())
            showOrigin(output, configuration, variable.name.c_str());
    return allThere;
}
