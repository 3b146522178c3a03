// SPDX-License-Identifier: Apache-2.0
// The handlers run between any two instructions of the tool. So they touch only what is complete
// before they are installed, and call only what may be called in a handler. Echo is a state of
// the terminal and not of the process: whoever takes it away gives it back on every way out.
#include "tools/platform/host.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <termios.h>
#include <unistd.h>

namespace kaz::host {

namespace {

/// Whoever types a secret may end or suspend the program instead. While the echo
/// is off, each of these signals first gives the terminal back and then takes
/// its usual course; where that leads back to the input, the echo goes off
/// again.
struct Watch {
    int signal;
    bool active;
    struct sigaction usual;
};

constinit Watch watches[] = {
    {SIGHUP, false, {}},  {SIGINT, false, {}},  {SIGQUIT, false, {}},
    {SIGTERM, false, {}}, {SIGALRM, false, {}}, {SIGPIPE, false, {}},
    {SIGTSTP, false, {}}, {SIGUSR1, false, {}}, {SIGUSR2, false, {}},
};

constinit volatile std::sig_atomic_t echoIsOff = 0;
constinit termios echoing = {};
constinit termios silent = {};

/// Runs a signal's usual course now, in the middle of its handler.
void takeUsualCourse(Watch& watch) {
    struct sigaction own;
    sigaction(watch.signal, &watch.usual, &own);
    sigset_t only;
    sigset_t blocked;
    sigemptyset(&only);
    sigaddset(&only, watch.signal);
    // Still blocked, as in every handler; it comes when the next call lets it through.
    raise(watch.signal);
    pthread_sigmask(SIG_UNBLOCK, &only, &blocked);
    // Still here: suspended and continued, or a handler of the tool's returned.
    pthread_sigmask(SIG_SETMASK, &blocked, nullptr);
    sigaction(watch.signal, &own, &watch.usual);
}

extern "C" void giveTerminalBack(int signal) {
    const int error = errno;
    tcsetattr(STDIN_FILENO, TCSANOW, &echoing);
    for (Watch& watch : watches)
        if (watch.signal == signal)
            takeUsualCourse(watch);
    if (echoIsOff != 0)
        tcsetattr(STDIN_FILENO, TCSANOW, &silent);
    errno = error;
}

/// A signal that the tool ignores stays ignored. Whether the read of the input
/// goes on after the signal stays as the tool has chosen.
void watchSignals() {
    for (Watch& watch : watches) {
        sigaction(watch.signal, nullptr, &watch.usual);
        const bool byDefault = watch.usual.sa_handler == SIG_DFL;
        if (watch.usual.sa_handler == SIG_IGN)
            continue;
        struct sigaction own = {};
        own.sa_handler = giveTerminalBack;
        own.sa_flags = byDefault ? SA_RESTART : watch.usual.sa_flags & SA_RESTART;
        sigemptyset(&own.sa_mask);
        watch.active = sigaction(watch.signal, &own, nullptr) == 0;
    }
}

void unwatchSignals() {
    for (Watch& watch : watches) {
        if (watch.active)
            sigaction(watch.signal, &watch.usual, nullptr);
        watch.active = false;
    }
}

} // namespace

bool echoOff() {
    if (echoIsOff != 0)
        return true;
    termios mode;
    if (tcgetattr(STDIN_FILENO, &mode) != 0)
        return false;
    // Both modes are complete before a handler can need them.
    echoing = mode;
    echoing.c_lflag |= ECHO;
    silent = mode;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    // For a handler of the tool's that ends the process in its own way.
    [[maybe_unused]] static const int registered = std::atexit(echoOn);
    watchSignals();
    // Between this and the call below a signal finds the echo on; giving it back does no harm.
    echoIsOff = 1;
    // What was typed ahead is kept: it may be the answer.
    tcsetattr(STDIN_FILENO, TCSANOW, &silent);
    return true;
}

void echoOn() {
    if (echoIsOff == 0)
        return;
    // Before the mode changes: a handler that runs in between must not take the echo away again.
    echoIsOff = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &echoing);
    unwatchSignals();
}

} // namespace kaz::host
