// SPDX-License-Identifier: Apache-2.0
// Says where the suite is installed.
#include <tools/moxtools.h>

namespace {

class Where : public KazConsoleApp {
    int runTool(int, char**) override {
        print_msg("%s", TI_myRootDir());
        return 0;
    }
};

Where where;

} // namespace
