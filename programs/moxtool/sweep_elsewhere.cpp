// SPDX-License-Identifier: Apache-2.0
// Where no library can be put before those of a program.

#include "commands.h"
#include "tools/moxtools.h"

int sweepCommand(int, char**) {
    print_err("moxtool sweep: works on Linux only");
    return KazCommandLine::wrongUsage;
}
