// SPDX-License-Identifier: Apache-2.0
// Echo is a mode of the console and outlives the process: it is given back on every way out that
// the system tells of.
#include "tools/platform/host.h"

#include <windows.h>

namespace kaz::host {

namespace {

constinit bool echoIsOff = false;
constinit DWORD echoingMode = 0;

HANDLE input() {
    return GetStdHandle(STD_INPUT_HANDLE);
}

/// The system runs this on a thread of its own when the program is about to be
/// ended from outside; what then happens is left to it.
BOOL WINAPI giveConsoleBack(DWORD) {
    if (echoIsOff)
        SetConsoleMode(input(), echoingMode);
    return FALSE;
}

} // namespace

bool echoOff() {
    if (echoIsOff)
        return true;
    DWORD mode = 0;
    if (GetConsoleMode(input(), &mode) == 0)
        return false;
    echoingMode = mode | ENABLE_ECHO_INPUT;
    // From the installation on the handler may run, on a thread of its own, and needs both.
    echoIsOff = true;
    SetConsoleCtrlHandler(giveConsoleBack, TRUE);
    SetConsoleMode(input(), mode & ~DWORD{ENABLE_ECHO_INPUT});
    return true;
}

void echoOn() {
    if (!echoIsOff)
        return;
    SetConsoleMode(input(), echoingMode);
    SetConsoleCtrlHandler(giveConsoleBack, FALSE);
    echoIsOff = false;
}

} // namespace kaz::host
