// SPDX-License-Identifier: Apache-2.0
/// Static objects around the application object use the library before it is
/// constructed and after it is destroyed.
#include "tools/moxtools.h"

#include <cstdio>

namespace {

/// Prints, and asks for everything that hangs off the application.
void useTheLibrary(const char* when) {
    print_msg("%s: application %s, context %s", when, KazApp::getInstance() ? "yes" : "no",
              KazMasterContext::getInstance() ? "yes" : "no");
    print_err("%s on the error channel", when);
    if (KazApp* app = KazApp::getInstance())
        std::printf("%s: name '%s'\n", when, app->getAppName());
    kaz_arg_text(arg_verbose, 0, nullptr);
    kaz_arg_get_untagged(0);
    TI_Vasg("when", when);
    TI_EnvVcont("projdir");
}

class Early {
public:
    Early() { useTheLibrary("before"); }
    ~Early() { useTheLibrary("after"); }
};

Early early;
KazMasterContext earlyContext; // outlives the application

class StaticTool : public KazConsoleApp {
public:
    ~StaticTool() override { useTheLibrary("destructor"); }

private:
    int runTool(int, char**) override {
        useTheLibrary("body");
        return 7;
    }
};

StaticTool theTool;

class Late {
public:
    ~Late() { useTheLibrary("late"); }
};

Late late;
KazMasterContext lateContext; // active while the tool runs

} // namespace
