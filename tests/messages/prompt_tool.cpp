// SPDX-License-Identifier: Apache-2.0
// A tool that asks: its first argument names what it does. What it learns goes
// to standard error, so that standard output holds what the user sees.

#include "ask_on_terminal.h"
#include "tools/app/KazConsoleApp.h"
#include "tools/messages/KazConsoleProgress.h"
#include "tools/messages/KazIODirector.h"
#include "tools/messages/messages.h"

#include <cstdio>
#include <string_view>

namespace {

/// 0 when there was an answer.
int ask(const char* prompt, bool echo) {
    KazString answer;
    const bool given = KazIODirector::getUserInput(answer, "Login", prompt, echo);
    std::fprintf(stderr, "%s: %s\n", prompt, given ? answer.getValue() : "none");
    return given ? 0 : 3;
}

} // namespace

int askSecret() {
    return ask("Password", false);
}

namespace {

/// Speaks while a file of the user's is open.
int writeFile(const char* name) {
    std::FILE* const file = std::fopen(name, "wb");
    std::fputs("data\n", file);
    std::fflush(file);
    print_msg("shown");
    print_err("shown too");
    return std::fclose(file);
}

/// A progress that goes back writes about 2^32 dots, unless nobody takes them.
int goBack() {
    KazConsoleProgress progress;
    progress.set(50, true);
    progress.set(0, true);
    return 0;
}

class PromptTool : public KazConsoleApp {
    int runTool(int, char** argv) override {
        const std::string_view what = argv[1];
        if (what == "both")
            return askSecret() + ask("Name", true);
        if (what == "confirm")
            return KazIODirector::confirm("Save", "Discard changes?", KazIODirector::YesNoCancel,
                                          KazIODirector::Ignore);
        if (what == "keeping")
            return writeFile(argv[2]);
        if (what == "back")
            return goBack();
        if (what == "fatal")
            fatal_err("no such thing as \"%s\"", argv[1]);
        return askOnTerminal(what);
    }
};

PromptTool theTool;

} // namespace
