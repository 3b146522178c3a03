// SPDX-License-Identifier: Apache-2.0
/// A tool that forks: parent and child register a file each, the child ends first.
#include "tools/moxtools.h"

#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class ForkTool : public KazConsoleApp {
    /// Arguments: the parent's file, and the child's if it is to have one.
    int runTool(int argc, char** argv) override {
        removeAtExit(argv[1]);
        const pid_t child = ::fork();
        if (child == 0) {
            if (argc > 2)
                removeAtExit(argv[2]);
            std::exit(0);
        }
        ::waitpid(child, nullptr, 0);
        for (int i = 1; i < argc; ++i)
            std::printf("%d", kazHostPath(argv[i]) && ::access(kazHostPath(argv[i]), F_OK) == 0);
        return 0;
    }
};

ForkTool theTool;

} // namespace
