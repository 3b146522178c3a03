// SPDX-License-Identifier: Apache-2.0
// A signal is noted and nothing else; the tool looks when it is ready to stop. Signals that were
// ignored stay ignored, as whoever has started the tool wanted it so. In the end the noted signal
// is raised once more with its usual effect, so that a shell sees what has ended the tool.
#include "tools/platform/host_signals.h"

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <iterator>

namespace kaz::host {

namespace {

/// A signal handler may do no more than set this.
volatile std::sig_atomic_t noted = 0;

void note(int signal) {
    noted = signal;
}

/// Not every host has all of them.
constexpr int signals[] = {
    SIGINT,  SIGTERM,
#ifdef SIGHUP
    SIGHUP,
#endif
#ifdef SIGPIPE
    SIGPIPE,
#endif
#ifdef SIGXFSZ
    SIGXFSZ,
#endif
};

void (*previous[std::size(signals)])(int);

} // namespace

/// The C library of Linux restarts calls that such a handler interrupts, so no read fails because
/// of it. The runtime library of Windows takes a handler off before it runs: there a second
/// interrupt ends the tool.
void noteSignals() {
    noted = 0;
    for (std::size_t i = 0; i < std::size(signals); ++i) {
        // The old action is known only by setting a new one. One that comes in between is noted
        // although it was to be ignored.
        previous[i] = std::signal(signals[i], note);
        if (previous[i] == SIG_IGN)
            std::signal(signals[i], SIG_IGN);
    }
}

void restoreSignals() {
    for (std::size_t i = 0; i < std::size(signals); ++i)
        // A number that the host refused has no action to go back to.
        if (previous[i] != SIG_ERR)
            std::signal(signals[i], previous[i]);
}

int notedSignal() {
    return noted;
}

/// Not for handlers: it writes out the streams. That comes first, because the usual effect of a
/// signal drops what is in the buffers.
void endByNotedSignal() {
    const int signal = noted;
    if (signal == 0 || signal == SIGINT)
        return;
    std::fflush(nullptr);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

} // namespace kaz::host
