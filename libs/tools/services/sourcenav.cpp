// SPDX-License-Identifier: Apache-2.0
// A template is split into words first; then each word's references are replaced, once,
// by texts that nobody reads again. So no name of a file can become an option, a second
// word or a command.
#include "tools/services/sourcenav.h"

#include "tools/config/vstring.h"
#include "tools/files/detail/text.h"
#include "tools/files/kazpath.h"
#include "tools/files/process.h"
#include "tools/files/tifiles.h"
#include "tools/formats/encode.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"
#include "tools/services/KazCommand.h"
#include "tools/util/detail/heap_ptr.h"
#include "tools/util/detail/site_setting.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace host = kaz::host;
using kaz::detail::orEmpty;
using kaz::detail::toText;

namespace {

/// In alphabetical order, and a program's first row is the one that a variable chooses.
constexpr kaz_source_preset presets[] = {
    {"clion", "clion --line ${line} --column ${column} ${file}"},
    {"codium", "codium --goto ${file}:${line}:${column}"},
    {"eclipse", "eclipse --launcher.openFile ${file}:${line}"},
    {"emacs", "emacs +${line}:${column} ${file}"},
    {"emacsclient", "emacsclient -n +${line}:${column} ${file}"},
    {"gedit", "gedit ${file} +${line}:${column}"},
    {"gvim", "gvim \"+call cursor(${line},${column})\" ${file}"},
    {"helix", "@terminal hx ${file}:${line}:${column}"},
    {"idea", "idea --line ${line} --column ${column} ${file}"},
    {"kate", "kate --line ${line} --column ${column} ${file}"},
    {"nano", "@terminal nano +${line},${column} ${file}"},
    {"notepad++", "notepad++ -n${line} -c${column} ${file}"},
    {"nvim", "@terminal nvim \"+call cursor(${line},${column})\" ${file}"},
    {"qtcreator", "qtcreator -client ${file}:${line}:${column}"},
    {"sublime", "subl ${file}:${line}:${column}"},
    {"vi", "@terminal vi +${line} ${file}"},
    {"vim", "@terminal vim \"+call cursor(${line},${column})\" ${file}"},
    {"visualstudio", "devenv /Edit ${file} /Command \"Edit.GoTo ${line}\""},
    {"vscode", "code --goto ${file}:${line}:${column}"},
    {"zed", "zed ${file}:${line}:${column}"},
    {nullptr, nullptr},
};

using Words = std::vector<std::string>;

/// False for a quote that is not closed.
bool split(const char* text, Words& words) {
    char** argv = nullptr;
    const int count = str_to_argv(text, &argv);
    const kaz::detail::HeapPtr<char*> owner(argv);
    words.assign(argv, argv + std::max(count, 0));
    return count >= 0;
}

constexpr std::string_view inTerminal = "@terminal";

/// An editor's words, with what is to be replaced still in them.
struct Editor {
    Words words;
    bool needsTerminal = false;
};

/// False for an open quote, and for no words.
bool read(const char* text, Editor& editor) {
    if (!split(text, editor.words))
        return false;
    editor.needsTerminal = !editor.words.empty() && editor.words[0] == inTerminal;
    if (editor.needsTerminal)
        editor.words.erase(editor.words.begin());
    return !editor.words.empty();
}

/// The template of a preset's name; any other text is one itself.
const char* templateOf(const char* editor) {
    const kaz_source_preset* row = presets;
    while (row->name != nullptr && std::string_view(row->name) != editor)
        ++row;
    return row->name != nullptr ? row->command : editor;
}

/// A program's name without its directory and without what Windows puts behind it.
std::string plainName(const std::string& program) {
    std::string name = kazLastFileComponent(program.c_str()).getValue();
    constexpr std::string_view extension = ".exe";
    if (name.size() > extension.size() && name.ends_with(extension))
        name.resize(name.size() - extension.size());
    return name;
}

bool isPath(const std::string& program) {
    return program.find_first_of("\\/") != std::string::npos;
}

/// The first preset whose program the variable's is. False when it is none's.
/// Options in the variable are dropped: where the line's number goes is known for the preset alone.
bool readFromVariable(const char* variable, Editor& editor) {
    const char* command = host::environment(variable);
    Words own;
    if (command == nullptr || !split(command, own) || own.empty())
        return false;
    const std::string name = plainName(own[0]);
    for (const kaz_source_preset* row = presets; row->name != nullptr; ++row) {
        read(row->command, editor);
        if (editor.words[0] != name)
            continue;
        // The user's own installation is started, not what the search path has.
        if (isPath(own[0]))
            editor.words[0] = own[0];
        return true;
    }
    return false;
}

/// Null when there is none.
const char* configuredEditor() {
    const char* name = host::environment("KAZ_SOURCE_EDITOR");
    if (name == nullptr)
        name = kaz::detail::siteSetting("source_editor");
    return name != nullptr && *name != '\0' ? name : nullptr;
}

enum class Choice { found, none, unreadable };

/// What is configured counts even when it cannot be read: to start another editor silently would
/// hide the mistake.
Choice choose(const char* name, Editor& editor) {
    if (name == nullptr)
        name = configuredEditor();
    if (name != nullptr)
        return read(templateOf(name), editor) ? Choice::found : Choice::unreadable;
    const bool isFound = readFromVariable("VISUAL", editor) || readFromVariable("EDITOR", editor);
    return isFound ? Choice::found : Choice::none;
}

/// What stands for the references to a source line.
struct Place {
    std::string file, line, column, dir, name;
};

/// False when the file cannot be named here.
bool locate(const char* file, int line, int column, Place& place) {
    const KazString full = kazFullPath(file);
    if (*orEmpty(file) == '\0' || !kazIsAbsolutePath(full.getValue()))
        return false;
    place.file = kazHostPath(full.getValue()).getValue();
    const std::size_t last = place.file.find_last_of("\\/");
    if (last == std::string::npos)
        return false;
    place.dir = place.file.substr(0, last);
    place.name = place.file.substr(last + 1);
    // From 1 on: callers that know no line give 0.
    place.line = std::to_string(std::max(line, 1));
    place.column = std::to_string(std::max(column, 1));
    return true;
}

std::string valueOf(const std::string& name, const Place& place) {
    if (name == "file")
        return place.file;
    if (name == "line")
        return place.line;
    if (name == "column")
        return place.column;
    if (name == "dir")
        return place.dir;
    if (name == "name")
        return place.name;
    return orEmpty(vstring_lookup_var(name.c_str()));
}

constexpr std::string_view fileReference = "${file}";

/// From left to right, and never what was put in: a file may be named "${line}".
std::string replaced(std::string_view word, const Place& place) {
    std::string result;
    for (;;) {
        const std::size_t begin = word.find("${");
        const std::size_t end = word.find('}', begin);
        if (begin == std::string_view::npos || end == std::string_view::npos)
            return result.append(word);
        result.append(word.substr(0, begin));
        result += valueOf(std::string(word.substr(begin + 2, end - begin - 2)), place);
        word.remove_prefix(end + 1);
    }
}

Words commandOf(const Editor& editor, const Place& place) {
    Words words;
    bool hasFile = false;
    for (const std::string& word : editor.words) {
        hasFile = hasFile || word.find(fileReference) != std::string::npos;
        words.push_back(replaced(word, place));
    }
    // A template without the file would open nothing of use.
    if (!hasFile)
        words.push_back(place.file);
    return words;
}

bool start(const Editor& editor, const Place& place) {
    const Words words = commandOf(editor, place);
    KazCommand command(words[0].c_str());
    for (std::size_t i = 1; i < words.size(); ++i)
        command.add(words[i].c_str());
    if (editor.needsTerminal)
        command.runInTerminal();
    else
        command.start();
    // The status of an editor says nothing about whether the place was shown.
    if (command.getError() != 0)
        print_err("%s", command.getErrorText().getValue());
    return command.getError() == 0;
}

bool isThere(const char* file) {
    host::FileStatus status;
    return host::status(file, status) == 0 && status.kind != host::Kind::directory;
}

} // namespace

const kaz_source_preset* kaz_source_presets() {
    return presets;
}

int kaz_source_command(const char* editor, const char* file, int line, int column,
                       KazStringColl& words) {
    // What was given may be one of the words that are replaced.
    Editor chosen;
    Place place;
    const bool isReady =
        choose(editor, chosen) == Choice::found && locate(file, line, column, place);
    const Words command = isReady ? commandOf(chosen, place) : Words();
    words.removeAll();
    for (const std::string& word : command)
        words.add(toText(word));
    return !isReady ? -1 : chosen.needsTerminal ? 1 : 0;
}

bool kazShowSource(const char* file, int line, int column) {
    Editor editor;
    Place place;
    if (!locate(file, line, column, place) || !isThere(kazFullPath(file).getValue())) {
        print_err("There is no file \"%s\".", kazPrintable(file).getValue());
        return false;
    }
    switch (choose(nullptr, editor)) {
    case Choice::none:
        print_err("No source editor is configured; set the variable source_editor.");
        return false;
    case Choice::unreadable:
        print_err("The source editor \"%s\" cannot be read.",
                  kazPrintable(configuredEditor()).getValue());
        return false;
    case Choice::found:
        break;
    }
    return start(editor, place);
}
