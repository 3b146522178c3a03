// SPDX-License-Identifier: Apache-2.0
// Every test program is a tool: the library's main starts this object.
#include "kit/valgrind.h"
#include "testkit/detail/alloc_hooks.h"
#include "tools/app/KazConsoleApp.h"

#include <gtest/gtest.h>

namespace {

class TestTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        testing::InitGoogleTest(&argc, argv);
        // Valgrind replaces the hooks.
        moxkit::detail::atFailure = [] { kit::leaveOutUnderValgrind("memory"); };
        return RUN_ALL_TESTS();
    }
};

TestTool theTool;

} // namespace

/// The C library keeps the text of its loader's last error; where memory fails just then,
/// the leak checker takes it for lost. Nothing here calls vasprintf itself.
extern "C" [[gnu::used, gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:vasprintf\n";
}
