// SPDX-License-Identifier: Apache-2.0
// A tool that does what its arguments say, one step after the other, so that tests
// can watch what becomes of it on a terminal and in a pipe.

#include "tools/moxtools.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <thread>

namespace {

using Handles = std::map<std::string, std::unique_ptr<KazProgressHandle>>;

/// "verb:NAME:rest"; NAME chooses the progress.
struct Step {
    std::string verb, name, rest;

    explicit Step(const std::string& text) {
        const std::size_t first = text.find(':');
        const std::size_t second = first == text.npos ? text.npos : text.find(':', first + 1);
        verb = text.substr(0, first);
        if (first != text.npos)
            name = text.substr(first + 1, second == text.npos ? text.npos : second - first - 1);
        if (second != text.npos)
            rest = text.substr(second + 1);
    }
    double number() const { return std::atof(rest.c_str()); }
};

void report(const Step& step, Handles& handles) {
    if (step.verb == "start") { // start:NAME:TOTAL:TITLE
        const std::size_t colon = step.rest.find(':');
        handles[step.name] = std::make_unique<KazProgressHandle>(
            KazString(step.rest.c_str() + colon + 1), std::atoi(step.rest.c_str()));
        return;
    }
    KazProgressHandle& handle = *handles.at(step.name);
    if (step.verb == "add")
        handle.increment(step.number(), false);
    else if (step.verb == "absolute")
        handle.increment(step.number(), true);
    else if (step.verb == "push")
        handle.startSubProgress(step.number(), 0);
    else if (step.verb == "pop")
        handle.endSubProgress();
    else if (step.verb == "tell")
        handle.msg(0, "%s", step.rest.c_str());
    else if (step.verb == "reset")
        handle.reset();
    else if (step.verb == "end")
        handles.erase(step.name);
}

bool talk(const Step& step) {
    const char* const text = step.name.c_str();
    if (step.verb == "message")
        print_msg("%s", text);
    else if (step.verb == "line")
        print_msg("%s\n", text);
    else if (step.verb == "error")
        print_err("%s", text);
    else if (step.verb == "trace")
        KAZ_TRACE("tool", "%s", text);
    else if (step.verb == "fatal")
        fatal_err("%s", text);
    else if (step.verb == "run")
        tty_end((tty_msg(tty_start(text), "output of %s", text), 0));
    else if (step.verb == "ask")
        print_msg("reply %d", static_cast<int>(KazIODirector::confirm(
                                  text, "Sure?", KazIODirector::YesNo, KazIODirector::Accept)));
    else if (step.verb == "sleep")
        std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(text)));
    else
        return false;
    return true;
}

class ProgressTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        KazTerminalDirector director;
        int first = 1;
        if (argc > 1 && std::strcmp(argv[1], "console") == 0)
            ++first;
        else
            director.install();
        Handles handles;
        for (int i = first; i < argc; ++i)
            if (const Step step(argv[i]); !talk(step))
                report(step, handles);
        return 0;
    }
};

ProgressTool theTool;

} // namespace
