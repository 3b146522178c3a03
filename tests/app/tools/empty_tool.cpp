// SPDX-License-Identifier: Apache-2.0
/// Forgets the one thing that every tool must have: its application object.
#include "tools/moxtools.h"

const char* const linkedAgainstTheLibrary = KazApp::getArgv0();
