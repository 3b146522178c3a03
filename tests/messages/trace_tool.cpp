// SPDX-License-Identifier: Apache-2.0
// A tool that traces what its arguments say, "TOPIC=TEXT" each, and tells what became of
// the arguments and of errno.
#include "tools/moxtools.h"

#include <cerrno>
#include <cstring>
#include <iterator>

namespace {

constexpr KazCommandLine::Option options[] = {
    {arg_trace, "TOPIC", "topic to trace"},
    {arg_trace_file, "FILE", "file for the traces", false, KazCommandLine::AnyFile}};
constexpr KazCommandLine commandLine({"trace_tool", "1", "Traces.", options, std::size(options),
                                      "[step ...]"});

int evaluations = 0;

const char* evaluated(const char* text) {
    ++evaluations;
    return text;
}

/// Static objects trace before main, and after it, when the streams are closed.
struct Outside {
    Outside() { KAZ_TRACE("outside", "before %s", "main"); }
    ~Outside() { KAZ_TRACE("outside", "after %s\n", "main"); }
} outside;

/// Traces while the failure of a trace is being reported.
class TracingDirector : public KazIODirector {
    void doPrintError(const char* format, va_list args) override {
        KAZ_TRACE("outside", "in the director");
        KazIODirector::doPrintError(format, args);
    }
};

void step(const KazString& text) {
    const int equals = text.find("=");
    const KazString topic = text.subStringBefore(equals);
    errno = EDOM;
    KAZ_TRACE(topic.getValue(), "%s", evaluated(text.getValue() + equals + 1));
    if (errno != EDOM)
        print_msg("errno is %d", errno);
}

class TraceTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        TracingDirector director;
        director.install();
        if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
            return status;
        for (int i = 0; const char* text = kaz_arg_get_untagged(i); ++i)
            step(text);
        print_msg("%d evaluations", evaluations);
        return 0;
    }
};

TraceTool theTool;

} // namespace
