// SPDX-License-Identifier: Apache-2.0
// Every test program is a tool: the library's main starts this object.
#include "tools/app/KazConsoleApp.h"

#include <gtest/gtest.h>

namespace {

class TestTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        testing::InitGoogleTest(&argc, argv);
        return RUN_ALL_TESTS();
    }
};

TestTool theTool;

} // namespace
