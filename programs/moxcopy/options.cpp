// SPDX-License-Identifier: Apache-2.0
// The library's own checks of names are used, so that what is a system or a diagram here is one
// in every tool. They work on the values of this run, and report what is wrong themselves.
#include "options.h"

#include "common/trace_options.h"
#include "names.h"
#include "offers.h"
#include "texts.h"
#include "tools/moxtools.h"

#include <cstring>
#include <iterator>

namespace {

constexpr KazCommandLine::Option options[] = {
    {arg_projdir, "DIR", "project directory", true, KazCommandLine::AnyDirectory},
    {arg_system, "NAME", "system to copy", true, KazCommandLine::OfTool},
    {arg_target, "DIR", "where the copy goes (else the ToolInfo variable tmp_dir)", false,
     KazCommandLine::AnyDirectory},
    {arg_filter, "PATTERN", "copy the files whose names match only"},
    {arg_verbose, nullptr, "tell each file that is copied"},
    {arg_Force, nullptr,
     "overwrite an existing copy without asking; files that only it has are kept"},
    {arg_Quiet, nullptr, "show questions and errors only"},
    traceTopics,
    traceFile,
    {arg_progress_channel, "CHANNEL", "for tools that run this one: where its progress is told"}};
constexpr KazCommandLine::Word words[] = {{"--plan", "tell what would be done, and do none of it"}};
constexpr KazCommandLine commandLine(
    {"moxcopy", MOX_VERSION,
     "Copies a system out of a project: all of it, or the files of the diagrams that are named.",
     options, std::size(options), "[diagram ...]", 0, -1, KazCommandLine::OfTool, words,
     std::size(words)},
    offerNames);

/// Reports wrong usage and gives the result of the check that found it.
bool misused(const char* reason) {
    commandLine.complain("%s", reason);
    return false;
}

bool isSwitchedOn(arg_type_enum type) {
    return TI_no(kaz_arg_text(type, 0, nullptr));
}

KazString textOf(arg_type_enum type) {
    return kaz_arg_text(type, 0, nullptr);
}

/// One component of a path that means nothing but itself.
/// A path in the place of a name would lead out of the project, and of the target.
bool isPlainName(const KazString& name) {
    return !kazIsExplicitPath(name) && kazLastFileComponent(name) == name;
}

bool readSystem(CopyOptions& options) {
    if (!edit_name_is_legal(edit_check_system | edit_check_projdir, 1))
        return false;
    const KazString project(kaz_env_projdir());
    options.system = kaz_env_system();
    if (project.isEmpty())
        return misused(localText(texts::noProject));
    if (!isPlainName(options.system)) {
        print_err(localText(texts::badSystem), kazPrintable(options.system).getValue());
        return false;
    }
    options.project = kazFullPath(project);
    options.source = kazComposePath(options.project, options.system);
    return true;
}

bool readTarget(CopyOptions& options) {
    KazString target = textOf(arg_target);
    if (target.isEmpty())
        target = TI_Vcont("tmp_dir");
    if (target.isEmpty())
        return misused(localText(texts::noTarget));
    options.target = kazDirForDisplay(kazFullPath(target));
    return true;
}

bool readFilter(CopyOptions& options) {
    options.filter = textOf(arg_filter);
    if (options.filter.findChar("\\/") >= 0)
        return misused(localText(texts::badFilter));
    return true;
}

/// Cleaning a name asks the configuration for characters that it cannot have. Without
/// one nothing is asked for a name in which there is nothing to clean.
bool needsCleaning(const char* name) {
    constexpr char harmless[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";
    return hasConfiguration() || name[std::strspn(name, harmless)] != '\0';
}

KazString fileNameOf(const char* name) {
    if (!needsCleaning(name))
        return name;
    std::vector<char> cleaned(std::strlen(name) + 1);
    kaz_diag_strcpy(cleaned.data(), name);
    return cleaned.data();
}

/// Naming a diagram makes it the current one, so that the library's own checks
/// clean the name and report what cannot be one.
bool readDiagram(const char* name, Diagram& diagram) {
    kaz_env_diagram_asgn(name);
    if (!edit_name_is_legal(edit_check_wildcard, 1) || !edit_name_is_legal(edit_check_diagram, 1))
        return false;
    diagram = {name, fileNameOf(kaz_env_diagram())};
    return true;
}

bool readDiagrams(CopyOptions& options) {
    for (int i = 0; i < kaz_arg_untagged_count(); ++i) {
        Diagram diagram;
        if (!readDiagram(kaz_arg_get_untagged(i), diagram))
            return false;
        options.diagrams.push_back(diagram);
    }
    return true;
}

} // namespace

KazString CopyOptions::destination() const {
    return kazComposePath(target, system);
}

int readOptions(int argc, char** argv, CopyOptions& options) {
    if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
        return status;
    options.verbose = isSwitchedOn(arg_verbose);
    options.force = isSwitchedOn(arg_Force);
    options.onlyPlan = commandLine.isPlan();
    options.quiet = isSwitchedOn(arg_Quiet);
    const bool isGood =
        readSystem(options) && readTarget(options) && readFilter(options) && readDiagrams(options);
    return isGood ? KazCommandLine::run : KazCommandLine::wrongUsage;
}
