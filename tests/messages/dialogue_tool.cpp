// SPDX-License-Identifier: Apache-2.0
// A tool that says and asks everything that a tool can, through the director that its first
// argument names, and then does what the others say.

#include "tools/moxtools.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace {

/// Shows nothing and answers by itself.
class Mute : public KazIODirector {
    int doTtyStart(const char*) override { return 3; }
    void doTtyEnd(int) override {}
    void doPrintMsg(const char*, va_list) override {}
    void doPrintError(const char*, va_list) override {}
    Reply doConfirm(const KazString&, const KazString&, DialogType, Reply) override {
        return Ignore;
    }
    bool doGetUserInput(KazString& result, const KazString&, const KazString&, bool) override {
        result = "plant";
        return true;
    }
    int doProgressStart(KazString, int) override { return 1; }
    void doProgressIncrement(int, double, bool) override {}
    void doProgressMsg(int, int, const char*, va_list) override {}
    void doProgressEnd(int) override {}
};

void say() {
    print_msg("%s\n", "one\ntwo\n");
    print_err("tank %d", 3);
    print_msg("\"quoted\" \\ \x01\x7f caf\xc3\xa9 \xff\xc3(\xed\xb2\x80");
    gu_set* const symbols = gu_set_create(0);
    gu_set_add(symbols, reinterpret_cast<void*>(std::intptr_t{7}));
    print_sym_msg(symbols, "here");
    gu_set_destroy(symbols);
    print_sym_err(nullptr, "nowhere");
    const int id = tty_start("ls -l");
    tty_msg(id, "file");
    tty_end(id);
}

void ask() {
    const auto reply =
        KazIODirector::confirm("Copy", "Sure?", KazIODirector::YesNoCancel, KazIODirector::Decline);
    KazString text;
    KazIODirector::getUserInput(text, "Copy", "System", true);
    KazIODirector::getUserInput(text, "Copy", "Password", false);
    print_msg("reply %d", static_cast<int>(reply));
}

void work() {
    KazProgressHandle progress("Copying", 4);
    progress.increment(0.4, false);
    progress.increment(0.7, false);
    progress.startSubProgress(50, 2);
    for (int i = 0; i < 3; ++i)
        progress.increment(30, false);
    progress.endSubProgress();
    progress.msg(2, "half of %s", "it");
    progress.reset();
    progress.increment(200, true);
}

class DialogueTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        static KazTerminalDirector terminal;
        static Mute mute;
        const std::string director = argc > 1 ? argv[1] : "console";
        if (director == "terminal")
            terminal.install();
        else if (director == "mute")
            mute.install();
        say();
        ask();
        work();
        for (int i = 2; i < argc; ++i)
            if (std::strcmp(argv[i], "fatal") == 0)
                fatal_err("no more %s", "memory");
            else if (std::strcmp(argv[i], "nested") == 0)
                shell_cmd(argv[++i]);
        return 5;
    }
};

DialogueTool theTool;

} // namespace
