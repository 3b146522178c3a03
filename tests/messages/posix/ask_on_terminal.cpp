// SPDX-License-Identifier: Apache-2.0
#include "messages/ask_on_terminal.h"

#include <csignal>
#include <cstdio>
#include <sys/time.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

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

} // namespace

int askOnTerminal(std::string_view what) {
    if (what == "interrupted")
        return askWhileInterrupted();
    if (what == "suspended")
        return suspendAndContinue();
    if (what == "ignoring")
        std::signal(SIGINT, SIG_IGN);
    return askSecret();
}
