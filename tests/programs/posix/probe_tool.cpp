// SPDX-License-Identifier: Apache-2.0
// A tool whose command line shells complete in a test.

#include "tools/moxtools.h"

namespace {

void offer(const char*, const char*, KazCommandLine::Offer take, void* data) {
    take("my plant", "a system", data);
    take("other", "another one", data);
}

constexpr KazCommandLine::Option options[] = {
    {arg_projdir, "DIR", "project directory", false, KazCommandLine::AnyDirectory},
    {arg_system, "NAME", "system", false, KazCommandLine::OfTool},
    {arg_verbose, nullptr, "tell more"}};
constexpr KazCommandLine commandLine({"probe_tool", "1", "Does nothing.", options, 3}, offer);

class ProbeTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        const int status = commandLine.parse(argc, argv);
        return status == KazCommandLine::run ? 0 : status;
    }
};

ProbeTool theTool;

} // namespace
