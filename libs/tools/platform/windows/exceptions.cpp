// SPDX-License-Identifier: Apache-2.0
#include "tools/platform/host.h"

#include <csignal>
#include <exception>

namespace kaz::host {

namespace {

/// The compiler's runtime aborts when it finds no handler for an exception that
/// was thrown anew; the language asks for std::terminate, as after a first throw.
/// Any other abort takes its course when this returns.
void onAbort(int) {
    if (std::uncaught_exceptions() > 0)
        std::terminate();
}

} // namespace

void terminateOnUncaughtRethrow() {
    std::signal(SIGABRT, onAbort);
}

} // namespace kaz::host
