// SPDX-License-Identifier: Apache-2.0
// A tool that does nothing: what the frame costs a process.
#include "tools/app/KazConsoleApp.h"

namespace {

class EmptyTool : public KazConsoleApp {
    int runTool(int, char**) override { return 0; }
};

EmptyTool tool;

} // namespace
