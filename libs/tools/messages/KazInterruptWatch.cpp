// SPDX-License-Identifier: Apache-2.0
// Watches nest; the outermost one installs the handlers and takes them away. In between a signal
// is only noted, and the tool looks where it can stop.
#include "tools/messages/KazInterruptWatch.h"

#include "tools/platform/host_signals.h"

namespace {

constinit int watches = 0;

} // namespace

KazInterruptWatch::KazInterruptWatch() {
    if (watches++ == 0)
        kaz::host::noteSignals();
}

KazInterruptWatch::~KazInterruptWatch() {
    if (--watches == 0)
        kaz::host::restoreSignals();
}

bool KazInterruptWatch::isStopped() {
    return kaz::host::notedSignal() != 0;
}

void KazInterruptWatch::endBySignal() {
    kaz::host::endByNotedSignal();
}
