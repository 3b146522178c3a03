// SPDX-License-Identifier: Apache-2.0
#include "tools/app/editors.h"

#include "tools/app/KazEditorsBase.h"
#include "tools/files/path_text.h"
#include "tools/strings/KazString.h"

#include <cstring>
#include <string>

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// The first word of a command whose words are native text. A quote that is not
/// closed reaches to the end.
std::string firstWord(const char* command) {
    std::string word;
    char quote = '\0';
    while (isBlank(*command))
        ++command;
    for (; *command != '\0' && (quote != '\0' || !isBlank(*command)); ++command) {
        if (*command == quote)
            quote = '\0';
        else if (quote == '\0' && (*command == '"' || *command == '\''))
            quote = *command;
        else
            word += *command;
    }
    return word;
}

} // namespace

const char* TI_cprogname(const char* editor) {
    static KazString program;
    const KazString command = KazEditorsBase::getInstance()->getCreationCommand(editor);
    // A command that is just the name is a name, blanks and all.
    program = command == editor ? kazLastFileComponent(command)
                                : kazLastFileComponent(firstWord(command).c_str());
    return program.getValue();
}
