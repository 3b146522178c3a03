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

void noteSignals() {
    noted = 0;
    for (std::size_t i = 0; i < std::size(signals); ++i) {
        previous[i] = std::signal(signals[i], note);
        if (previous[i] == SIG_IGN)
            std::signal(signals[i], SIG_IGN);
    }
}

void restoreSignals() {
    for (std::size_t i = 0; i < std::size(signals); ++i)
        if (previous[i] != SIG_ERR)
            std::signal(signals[i], previous[i]);
}

int notedSignal() {
    return noted;
}

void endByNotedSignal() {
    const int signal = noted;
    if (signal == 0 || signal == SIGINT)
        return;
    std::fflush(nullptr);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

} // namespace kaz::host
