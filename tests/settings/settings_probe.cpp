// SPDX-License-Identifier: Apache-2.0
// A process that writes settings: to SECTION, COUNT values of its own from number FIRST on and
// as often one of everybody's, each time with a commit.
#include "tools/moxtools.h"

#include <cstdlib>

namespace {

class Probe : public KazConsoleApp {
    int runTool(int, char** argv) override {
        const int first = std::atoi(argv[2]), count = std::atoi(argv[3]);
        KazSettings settings(argv[1]);
        for (int n = first; n < first + count; ++n) {
            KazString own;
            own.format("own %d", n);
            settings.setInteger(own, first);
            settings.setInteger("shared", first);
            settings.commit();
        }
        return 0;
    }
};

Probe probe;

} // namespace
