// SPDX-License-Identifier: Apache-2.0
// Queries go to one set of arguments: that of the tools context where it has its own, else the
// application's. Without an application nothing is given, and defaults answer. Texts belong to
// the set and live as long as it.
#include "tools/app/arguments.h"

#include "tools/app/KazApp.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/KazToolsContext.h"
#include "tools/app/detail/command_text.h"
#include "tools/app/editors.h"
#include "tools/files/path_text.h"
#include "tools/files/tifiles.h"
#include "tools/formats/encode.h"
#include "tools/messages/detail/TraceRequest.h"
#include "tools/messages/trace.h"
#include "tools/util/text.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

namespace {

/// The set that queries ask; null without an application object.
const KazParsedArgs* currentSet() {
    KazApp* app = KazApp::getInstance();
    if (app == nullptr)
        return nullptr;
    // The virtual operation: a console application makes its context here, at the first question.
    if (app->getActiveContext() != nullptr)
        if (const KazParsedArgs* own = KazToolsContext::getInstance()->getParsedArgs())
            return own;
    return app->getParsedArgs();
}

KazParsedArgs* ownSet(const KazParsedArgs* applicationSet) {
    // What counts for the whole process is handed on; the line that is parsed next adds the rest.
    KazToolsContext* context = KazToolsContext::getInstance();
    if (context == nullptr)
        return nullptr;
    KazParsedArgs* set = context->allocParsedArgs();
    set->copyGlobal(applicationSet);
    return set;
}

/// What the line asks to be traced holds from here on.
void obeyTraceOptions(const KazParsedArgs& set) {
    std::vector<const char*> topics;
    while (const char* topic = set.getArgText(arg_trace, static_cast<int>(topics.size()), nullptr))
        topics.push_back(topic);
    const char* const file = set.getArgText(arg_trace_file, 0, nullptr);
    if (!topics.empty() || file != nullptr)
        kaz::detail::requestTraces(topics.data(), topics.size(), file);
}

std::string traceText(const KazArgMeaning& meaning) {
    switch (meaning.kind) {
    case KazArgMeaning::option:
        return std::string("option ") + meaning.row->text;
    case KazArgMeaning::repetition:
        return std::string("option ") + meaning.row->text + ", given again";
    case KazArgMeaning::value:
        return "value " + std::to_string(meaning.item + 1) + " of " + meaning.row->text;
    case KazArgMeaning::argument:
        return "argument " + std::to_string(meaning.item + 1);
    case KazArgMeaning::notRead:
        break;
    }
    return "not read";
}

void traceLine(const KazParsedArgs& set, int argc, char** argv, bool isGood) {
    for (int i = 1; i < argc; ++i)
        if (argv[i] != nullptr)
            KAZ_TRACE("arguments", "%d %s: %s", i, kazPrintable(argv[i]).getValue(),
                      traceText(set.getMeaning(i)).c_str());
    if (!isGood)
        KAZ_TRACE("arguments", "the line is refused");
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Tools may write "-e", "-ed", ... or anything behind the full option.
bool isEditorOption(const char* argument) {
    static constexpr char option[] = "-editor";
    if (argument == nullptr || argument[0] != '-' || argument[1] == '\0')
        return false;
    // Compared as far as both reach, which is what lets abbreviations and longer words through.
    const std::size_t length = std::min(std::strlen(argument), sizeof option - 1);
    for (std::size_t i = 0; i < length; ++i)
        if (std::tolower(static_cast<unsigned char>(argument[i])) != option[i])
            return false;
    return true;
}

/// A position before the last argument, or 0 when there is none.
int findEditorOption(int argc, char** argv) {
    // The last argument cannot be the option, because its value would be missing.
    for (int i = 1; i < argc - 1; ++i)
        if (isEditorOption(argv[i]))
            return i;
    return 0;
}

/// The heap copy is the new argv[0]; null when the path does not fit.
char* programBeside(const char* argv0, const char* program) {
    // A path that is longer gives null, and the caller goes on with the old argv[0].
    char path[512];
    const KazString directory = kazPathDirPart(argv0);
    if (directory.isEmpty())
        return mkcpy(program);
    if (TI_catfile(directory, program, path, sizeof path) == nullptr)
        return nullptr;
    return mkcpy(path);
}

} // namespace

bool kaz_arg_parse(int argc, char** argv, const arg_type_enum* required,
                   const arg_type_enum* optional, int minUntagged, bool ownArgs) {
    KazApp* app = KazApp::getInstance();
    KazParsedArgs* set = app != nullptr ? app->getParsedArgs() : nullptr;
    if (ownArgs && set != nullptr)
        set = ownSet(set);
    if (set == nullptr)
        return false;
    const bool isGood = set->parse(argc, argv, required, optional, minUntagged);
    // A refused line steers nothing, although its values stay in the set.
    if (isGood)
        obeyTraceOptions(*set);
    // Asked here once: the walk over the line is for traces alone.
    if (kazIsTraced("arguments"))
        traceLine(*set, argc, argv, isGood);
    return isGood;
}

const char* kaz_arg_text(arg_type_enum type, int index, const char** defaultText) {
    if (const KazParsedArgs* set = currentSet())
        return set->getArgText(type, index, defaultText);
    return defaultText != nullptr ? *defaultText : nullptr;
}

const char* kaz_arg_text_or(arg_type_enum type, const char* defaultText, int index) {
    return kaz_arg_text(type, index, &defaultText);
}

const char* kaz_arg_repeating_text(arg_type_enum type, int occurrence, int item,
                                   const char** defaultText) {
    if (const KazParsedArgs* set = currentSet())
        return set->getRepeatingText(type, occurrence, item, defaultText);
    return defaultText != nullptr ? *defaultText : nullptr;
}

const char* kaz_arg_get_untagged(int index) {
    const KazParsedArgs* set = currentSet();
    return set != nullptr ? set->getUntagged(index) : nullptr;
}

int kaz_arg_untagged_count() {
    const KazParsedArgs* set = currentSet();
    return set != nullptr ? set->getUntaggedCount() : 0;
}

bool kaz_arg_is_repeating(arg_type_enum type) {
    const KazArgDescription* row = KazArgDescription::find(type);
    return row != nullptr && row->repeatLimit > 1;
}

KazString kaz_arg_text_encode(const char* text) {
    return kaz::detail::encodeCommandText(text);
}

bool text_is_integer(const char* text) {
    return text != nullptr && *text != '\0' && std::all_of(text, text + std::strlen(text), isDigit);
}

bool text_is_float(const char* text) {
    if (text == nullptr)
        return true;
    return std::all_of(text, text + std::strlen(text),
                       [](char c) { return isDigit(c) || c == '.'; });
}

/// Removes the null arguments; a null ends the rest, as in every argument vector.
void arg_shift_argv(int* argc, char** argv) {
    // There is room for the terminating null even so, as in every argument vector.
    if (*argc < 1) {
        argv[0] = nullptr;
        return;
    }
    char** end = std::remove(argv, argv + *argc, static_cast<char*>(nullptr));
    *end = nullptr;
    *argc = static_cast<int>(end - argv);
}

void argv_to_glob(int argc, char** argv, int* outArgc, char*** outArgv) {
    if (outArgc != nullptr)
        *outArgc = argc;
    if (outArgv != nullptr)
        *outArgv = argv;
}

int get_editor_from_argv(int* argc, char** argv, char** editor, int renameArgv0) {
    const int option = findEditorOption(*argc, argv);
    if (option == 0)
        return 0;
    // The text stays valid when the vector is shifted: only the pointers move.
    *editor = argv[option + 1];
    argv[option] = nullptr;
    argv[option + 1] = nullptr;
    arg_shift_argv(argc, argv);
    if (renameArgv0 == 0)
        return 1;
    // Never freed, as argv has to live to the end of the process.
    if (char* renamed = programBeside(argv[0], TI_cprogname(*editor)))
        argv[0] = renamed;
    return 1;
}
