#include "options.h"

#include "names.h"
#include "tools/moxtools.h"

#include <cstring>
#include <set>

namespace {

/// The options of this tool; their texts and abbreviations are the suite's.
struct Accepted {
    arg_type_enum type;
    bool required;
    const char* value; ///< name of the value, or null
    const char* meaning;
};

constexpr Accepted acceptedOptions[] = {
    {arg_projdir, true, "DIR", "project directory"},
    {arg_system, true, "NAME", "system to copy"},
    {arg_target, false, "DIR", "where the copy goes (else the ToolInfo variable tmp_dir)"},
    {arg_filter, false, "PATTERN", "copy the files whose names match only"},
    {arg_verbose, false, nullptr, "tell each file that is copied"},
    {arg_Force, false, nullptr, "overwrite an existing copy without asking"},
    {arg_Quiet, false, nullptr, "show questions and errors only"},
};

std::vector<arg_type_enum> typesOf(bool required) {
    std::vector<arg_type_enum> types;
    for (const Accepted& option : acceptedOptions)
        if (option.required == required)
            types.push_back(option.type);
    types.push_back(arg_end);
    return types;
}

const Accepted* findAccepted(arg_type_enum type) {
    for (const Accepted& option : acceptedOptions)
        if (option.type == type)
            return &option;
    return nullptr;
}

/// The option with the name of its value.
KazString spelled(const Accepted& option) {
    KazString text(KazArgDescription::find(option.type)->text);
    if (option.value != nullptr)
        text.appendFormat(" %s", option.value);
    return text;
}

/// The shortest text that still means the option.
KazString abbreviation(const Accepted& option) {
    const KazArgDescription* row = KazArgDescription::find(option.type);
    KazString full(row->text);
    for (int length = row->minLength; length < full.getLength(); ++length)
        if (KazArgDescription::match(full.subStringBefore(length)) == row)
            return full.subStringBefore(length);
    return full;
}

void printUsage() {
    KazString line;
    line.format("usage: %s", KazApp::getInstance()->getAppName());
    for (const Accepted& option : acceptedOptions)
        line.appendFormat(option.required ? " %s" : " [%s]", spelled(option).getValue());
    print_err("%s [diagram ...]", line.getValue());
    for (const Accepted& option : acceptedOptions)
        print_err("  %-16s %-5s %s", spelled(option).getValue(), abbreviation(option).getValue(),
                  option.meaning);
}

/// Finds what the library's parser refuses in silence.
class Mistake {
public:
    Mistake(int argc, char** argv) : argc_(argc), argv_(argv) {}

    KazString text() {
        for (int i = 1; i < argc_ && text_.isEmpty(); ++i)
            if (argv_[i][0] == '-')
                i += readOption(i);
        for (const Accepted& option : acceptedOptions)
            if (text_.isEmpty() && option.required && !seen_.contains(option.type))
                text_.format("Option %s is missing", spelled(option).getValue());
        return text_;
    }

private:
    /// How many values follow the option at @p position.
    int readOption(int position) {
        const KazArgDescription* row = KazArgDescription::match(argv_[position]);
        if (row == nullptr)
            text_.format("Unknown option '%s'", argv_[position]);
        else if (findAccepted(row->type) == nullptr)
            text_.format("Option %s is not used by this tool", row->text);
        else if (!seen_.insert(row->type).second)
            return 0; // Repetitions take no values.
        else if (position + row->valueCount >= argc_)
            text_.format("Option %s lacks its value", row->text);
        return row != nullptr ? row->valueCount : 0;
    }

    int argc_;
    char** argv_;
    std::set<arg_type_enum> seen_;
    KazString text_;
};

/// Reports wrong usage and gives the result of the check that found it.
bool misused(const KazString& reason) {
    print_err("%s", reason.getValue());
    printUsage();
    return false;
}

bool isSwitchedOn(arg_type_enum type) {
    return TI_no(kaz_arg_text(type, 0, nullptr));
}

KazString textOf(arg_type_enum type) {
    return kaz_arg_text(type, 0, nullptr);
}

/// One component of a path that means nothing but itself.
bool isPlainName(const KazString& name) {
    return !kazIsExplicitPath(name) && kazLastFileComponent(name) == name;
}

bool readSystem(CopyOptions& options) {
    if (!edit_name_is_legal(edit_check_system | edit_check_projdir, 1))
        return false;
    const KazString project(kaz_env_projdir());
    options.system = kaz_env_system();
    if (project.isEmpty())
        return misused("The project directory is empty");
    if (!isPlainName(options.system)) {
        print_err("Invalid system name: %s", options.system.getValue());
        return false;
    }
    options.source = kazComposePath(kazFullPath(project), options.system);
    return true;
}

bool readTarget(CopyOptions& options) {
    KazString target = textOf(arg_target);
    if (target.isEmpty())
        target = TI_Vcont("tmp_dir");
    if (target.isEmpty())
        return misused("There is no -target, and the ToolInfo variable tmp_dir is not set");
    options.target = kazDirForDisplay(kazFullPath(target));
    return true;
}

bool readFilter(CopyOptions& options) {
    options.filter = textOf(arg_filter);
    if (options.filter.findChar("\\/") >= 0)
        return misused("The filter is for file names, not for paths");
    return true;
}

/// Naming a diagram makes it the current one, so that the library's own checks
/// clean the name and report what cannot be one.
bool readDiagram(const char* name, Diagram& diagram) {
    kaz_env_diagram_asgn(name);
    if (!edit_name_is_legal(edit_check_wildcard, 1) || !edit_name_is_legal(edit_check_diagram, 1))
        return false;
    const char* cleaned = kaz_env_diagram();
    std::vector<char> fileName(std::strlen(cleaned) + 1);
    kaz_diag_strcpy(fileName.data(), cleaned);
    diagram = {name, fileName.data()};
    return true;
}

bool readDiagrams(CopyOptions& options) {
    for (int i = 0; const char* name = kaz_arg_get_untagged(i); ++i) {
        Diagram diagram;
        if (!readDiagram(name, diagram))
            return false;
        options.diagrams.push_back(diagram);
    }
    return true;
}

} // namespace

KazString CopyOptions::destination() const {
    return kazComposePath(target, system);
}

bool readOptions(int argc, char** argv, CopyOptions& options) {
    if (!kaz_arg_parse(argc, argv, typesOf(true).data(), typesOf(false).data(), 0, false))
        return misused(Mistake(argc, argv).text());
    options.verbose = isSwitchedOn(arg_verbose);
    options.force = isSwitchedOn(arg_Force);
    options.quiet = isSwitchedOn(arg_Quiet);
    return readSystem(options) && readTarget(options) && readFilter(options) &&
           readDiagrams(options);
}
