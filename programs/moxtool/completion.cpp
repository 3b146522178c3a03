// SPDX-License-Identifier: Apache-2.0
// The scripts ask the program, and nothing else: no option stands in them, so that
// they cannot grow old. A candidate comes as WORD<TAB>HELP; ":file" and ":directory"
// leave the word to the shell.

#include "commands.h"
#include "common/output.h"
#include "common/trace_options.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr KazCommandLine::Option options[] = {traceTopics, traceFile};

constexpr const char* shells[] = {"bash", "zsh", "fish"};

/// A shell, and then programs.
void offerWords(const char* option, const char*, KazCommandLine::Offer offer, void* data) {
    if (*option != '\0')
        return;
    if (kaz_arg_get_untagged(0) == nullptr)
        for (const char* const shell : shells)
            offer(shell, nullptr, data);
    else
        for (const char* const program : suitePrograms)
            offer(program, nullptr, data);
}

constexpr KazCommandLine
    commandLine({"moxtool completion", MOX_VERSION,
                 "Prints a script that completes the command lines of programs.", options,
                 std::size(options), "bash|zsh|fish [NAME ...]", 1, -1, KazCommandLine::OfTool},
                offerWords);

// The word that is typed may hold quotes and backslashes; what is printed gets new ones.
constexpr const char* bashScript = R"(_mox_complete() {
    local cur=${COMP_WORDS[COMP_CWORD]} line word words=() IFS=$'\n'
    for word in "${COMP_WORDS[@]:1}"; do
        word=${word//[\"\'\\]/}
        words+=("$word")
    done
    cur=${cur//[\"\'\\]/}
    COMPREPLY=()
    while IFS= read -r line; do
        word=${line%%$'\t'*}
        case $word in
        :file) compopt -o filenames; COMPREPLY+=($(compgen -f -- "$cur")) ;;
        :directory) compopt -o filenames; COMPREPLY+=($(compgen -d -- "$cur")) ;;
        *) printf -v word %q "$word"; COMPREPLY+=("$word") ;;
        esac
    done < <("${COMP_WORDS[0]}" --complete $((COMP_CWORD - 1)) "${words[@]}" 2>/dev/null)
}
complete -F _mox_complete)";

constexpr const char* zshScript = R"(_moxtools() {
    local line word lines=() values=()
    lines=("${(@f)$("${words[1]}" --complete $((CURRENT - 2)) "${(@Q)words[2,-1]}" 2>/dev/null)}")
    for line in "${lines[@]}"; do
        word=${line%%$'\t'*}
        case $word in
        '') ;;
        :file) _files ;;
        :directory) _files -/ ;;
        *) values+=("${word//:/\\:}:${line#*$'\t'}") ;;
        esac
    done
    (( ${#values} )) && _describe word values
}
if [ "${funcstack[1]}" = _moxtools ]; then
    _moxtools "$@"
else
    compdef _moxtools)";

constexpr const char* fishScript = R"(function __mox_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    for line in ($words[1] --complete (math (count $words) - 1) $words[2..-1] "$current" 2>/dev/null)
        switch $line
            case ':file*'
                __fish_complete_path "$current"
            case ':directory*'
                __fish_complete_directories "$current"
            case '*'
                echo $line
        end
    end
end
)";

using Names = std::vector<std::string>;

std::string joined(const Names& names) {
    std::string text;
    for (const std::string& name : names)
        text += " " + name;
    return text;
}

std::string scriptFor(std::string_view shell, const Names& names) {
    if (shell == "bash")
        return bashScript + joined(names);
    // The first line lets the script lie in a directory of completions; its end serves those who
    // read it at the start of the shell.
    if (shell == "zsh")
        return "#compdef" + joined(names) + "\n" + zshScript + joined(names) + "\nfi";
    std::string script = fishScript;
    for (const std::string& name : names)
        script += "complete -c " + name + " -f -a '(__mox_complete)'\n";
    script.pop_back();
    return script;
}

/// A name is part of a script: nothing in it may mean more than itself.
bool isPlain(std::string_view name) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_.+-";
    return !name.empty() && name[0] != '-' && name.find_first_not_of(plain) == name.npos;
}

bool readNames(Names& names) {
    for (int i = 1; i < kaz_arg_untagged_count(); ++i) {
        const char* const name = kaz_arg_get_untagged(i);
        if (!isPlain(name)) {
            commandLine.complain("%s cannot be the name of a program",
                                 kazPrintable(name).getValue());
            return false;
        }
        names.emplace_back(name);
    }
    if (names.empty())
        names.assign(suitePrograms.begin(), suitePrograms.end());
    return true;
}

} // namespace

int completionCommand(int argc, char** argv) {
    if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
        return status;
    const std::string_view shell = kaz_arg_get_untagged(0);
    if (std::find(std::begin(shells), std::end(shells), shell) == std::end(shells)) {
        commandLine.complain("there is no script for %s",
                             kazPrintable(kaz_arg_get_untagged(0)).getValue());
        return KazCommandLine::wrongUsage;
    }
    Names names;
    if (!readNames(names))
        return KazCommandLine::wrongUsage;
    print_msg("%s", scriptFor(shell, names).c_str());
    return hasOutputArrived() ? 0 : 1;
}
