// SPDX-License-Identifier: Apache-2.0
// Greets the system that "-system" names. The library's main starts the one
// static object; what runTool returns is the exit status.
#include "greeting.h"

namespace {

class HelloTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        const arg_type_enum options[] = {arg_system, arg_verbose, arg_end};
        if (!kaz_arg_parse(argc, argv, nullptr, options, 0, false)) {
            print_err("usage: %s [-system NAME] [-verbose]", getAppName());
            return 2;
        }
        const char* nobody = "world";
        print_msg("%s", greeting(kaz_arg_text(arg_system, 0, &nobody)).getValue());
        return 0;
    }
};

HelloTool theTool;

} // namespace
