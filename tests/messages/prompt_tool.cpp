// A tool that asks: its first argument names what it does. What it learns goes
// to standard error, so that standard output holds what the user sees.

#include "tools/app/KazConsoleApp.h"
#include "tools/messages/KazIODirector.h"
#include "tools/messages/messages.h"

#include <csignal>
#include <cstdio>
#include <string_view>
#include <sys/time.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

/// 0 when there was an answer.
int ask(const char* prompt, bool echo) {
    KazString answer;
    const bool given = KazIODirector::getUserInput(answer, "Login", prompt, echo);
    std::fprintf(stderr, "%s: %s\n", prompt, given ? answer.getValue() : "none");
    return given ? 0 : 3;
}

int askSecret() {
    return ask("Password", false);
}

void noteSignal(int signal) {
    std::fprintf(stderr, "signal %d\n", signal);
}

/// Interrupts itself again and again: the first signal may come before the tool
/// reads. 0 when its own handler is in its place again afterwards.
int askWhileInterrupted() {
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    sigaction(SIGALRM, &action, nullptr);
    const itimerval often = {{0, 20000}, {0, 20000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    askSecret();
    sigaction(SIGALRM, nullptr, &action);
    return action.sa_handler == noteSignal ? 0 : 4;
}

/// Speaks while a file of the user's is open.
int writeFile(const char* name) {
    std::FILE* const file = std::fopen(name, "w");
    std::fputs("data\n", file);
    std::fflush(file);
    print_msg("shown");
    print_err("shown too");
    return std::fclose(file);
}

bool terminalEchoes() {
    termios mode;
    return tcgetattr(STDIN_FILENO, &mode) == 0 && (mode.c_lflag & ECHO) != 0;
}

void waitForEcho(bool wanted) {
    for (int i = 0; i < 2000 && terminalEchoes() != wanted; ++i)
        usleep(5000);
    std::fprintf(stderr, "echo %s\n", terminalEchoes() ? "on" : "off");
}

/// Does what an interactive shell does when its user suspends a program that is
/// asking, looks around and brings it back to the foreground.
int suspendAndContinue() {
    std::signal(SIGTTOU, SIG_IGN);
    const pid_t child = fork();
    if (child == 0) {
        setpgid(0, 0);
        tcsetpgrp(STDIN_FILENO, getpid());
        std::signal(SIGTTOU, SIG_DFL);
        return askSecret();
    }
    waitForEcho(false);
    kill(child, SIGTSTP);
    int status = 0;
    waitpid(child, &status, WUNTRACED);
    std::fputs(WIFSTOPPED(status) ? "stopped\n" : "not stopped\n", stderr);
    waitForEcho(true);
    kill(child, SIGCONT);
    waitForEcho(false);
    kill(child, SIGTERM);
    waitpid(child, &status, 0);
    std::fprintf(stderr, "ended by %d\n", WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    waitForEcho(true);
    return 0;
}

class PromptTool : public KazConsoleApp {
    int runTool(int, char** argv) override {
        const std::string_view what = argv[1];
        if (what == "both")
            return askSecret() + ask("Name", true);
        if (what == "interrupted")
            return askWhileInterrupted();
        if (what == "suspended")
            return suspendAndContinue();
        if (what == "confirm")
            return KazIODirector::confirm("Save", "Discard changes?", KazIODirector::YesNoCancel,
                                          KazIODirector::Ignore);
        if (what == "keeping")
            return writeFile(argv[2]);
        if (what == "fatal")
            fatal_err("no such thing as \"%s\"", argv[1]);
        if (what == "ignoring")
            std::signal(SIGINT, SIG_IGN);
        return askSecret();
    }
};

PromptTool theTool;

} // namespace
