// moxinfo: shows a tool's configuration.
#include "common/CommandLine.h"

#include "tools/app/KazConsoleApp.h"
#include "tools/app/arguments.h"
#include "tools/config/toolinfo.h"
#include "tools/config/vstring.h"
#include "tools/files/kazpath.h"
#include "tools/files/process.h"
#include "tools/files/tifiles.h"
#include "tools/messages/messages.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

const CommandLine commandLine(
    "moxinfo", "[name | template ...]",
    "Shows the configuration of the tools: the ToolInfo files and each variable with the value in\n"
    "force, under the source that gives it. What is shown can itself be read as a ToolInfo file.\n"
    "With names only their values; a template is a text with ${name} references to expand.",
    {{arg_toolinfo, "FILE", "start from this ToolInfo file"},
     {arg_file, "FILE", "read this file too, its definitions replacing earlier ones"},
     {arg_source, "SOURCE", "only what this file gives, or: environment, library, run-time"},
     {arg_output, "FILE", "write to this file"},
     {arg_verbose, nullptr, "with names: show the source of each value"}});

/// Where the lines go: the message channel, or a file.
class Output {
public:
    /// False, and reported, when the file cannot be written.
    bool open(const char* name) {
        if (name == nullptr)
            return true;
        file.reset(TI_fopen(_TI_hm(name), "w"));
        if (file == nullptr)
            print_err("moxinfo: cannot write %s", name);
        return file != nullptr;
    }

    void line(const std::string& text) {
        if (file == nullptr)
            print_msg("%s", text.c_str());
        else if (std::fprintf(file.get(), "%s\n", text.c_str()) < 0)
            complete = false;
    }

    /// False, and reported, when not all of it arrived.
    bool close() {
        std::FILE* stream = file != nullptr ? file.get() : stdout;
        if (std::fflush(stream) != 0 || std::ferror(stream) != 0)
            complete = false;
        if (file != nullptr && std::fclose(file.release()) != 0)
            complete = false;
        if (!complete)
            print_err("moxinfo: the output is not complete");
        return complete;
    }

private:
    struct Close {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    std::unique_ptr<std::FILE, Close> file;
    bool complete = true;
};

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

/// A value of the environment may hold line ends, which a file could not.
std::string onOneLine(const char* value) {
    std::string text = value != nullptr ? value : "";
    for (char& c : text)
        if (c == '\n' || c == '\r')
            c = ' ';
    return text;
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

/// What the option -source names, as the variables carry it.
std::string wantedSource() {
    const char* wanted = kaz_arg_text(arg_source, 0, nullptr);
    if (wanted == nullptr)
        return "";
    std::string text = wanted;
    if (text == "environment" || text == "run-time" || text == "library")
        return text;
    return kazFullPath(wanted).getValue();
}

void showAll(Output& output) {
    const std::string wanted = wantedSource();
    if (wanted.empty()) {
        output.line("% ToolInfo files:");
        for (int i = 0; KazString name = TI_Vfile(i); ++i)
            output.line("%   " + std::string(name.getValue()));
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
                output.line("% from " + source);
            isFirst = false;
            output.line(variable.name + "=" + variable.value);
        }
    }
}

/// False, and reported, when there is no such variable.
bool showVariable(Output& output, const char* name) {
    const char* value = TI_EnvVcont(name);
    if (value == nullptr) {
        print_err("moxinfo: %s is not defined", name);
        return false;
    }
    if (kaz_arg_text(arg_verbose, 0, nullptr) != nullptr)
        output.line("% from " + sourceOf(name));
    output.line(value);
    return true;
}

void showExpansion(Output& output, const char* text) {
    char* expanded = nullptr;
    vstring_sub(text, &expanded);
    const std::unique_ptr<char, decltype(&std::free)> owner(expanded, &std::free);
    output.line(expanded);
}

bool showArguments(Output& output) {
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
    const char* file = kaz_arg_text(arg_file, 0, nullptr);
    if (file == nullptr)
        return true;
    if (TI_V_user_file(kazFullPath(file), true) == 0)
        return true;
    print_err("moxinfo: cannot read %s", file);
    return false;
}

class MoxInfo : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        if (!commandLine.parse(argc, argv))
            return CommandLine::wrongUsage;
        if (const char* file = kaz_arg_text(arg_toolinfo, 0, nullptr))
            TI_putenv("ToolInfo", kazFullPath(file));
        // Before the further file, which comes after the others, and before the
        // output, which may replace one of them.
        TI_Vinit();
        Output output;
        if (!readFurtherFile() || !output.open(kaz_arg_text(arg_output, 0, nullptr)))
            return 1;
        bool good = true;
        if (kaz_arg_get_untagged(0) != nullptr)
            good = showArguments(output);
        else
            showAll(output);
        return output.close() && good ? 0 : 1;
    }
};

MoxInfo moxinfo;

} // namespace
