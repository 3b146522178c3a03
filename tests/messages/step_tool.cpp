// SPDX-License-Identifier: Apache-2.0
// A tool that does what its arguments say, one step after the other, and runs tools, itself
// among them: tests watch what becomes of it on a terminal, in a pipe and inside another tool.

#include "tools/moxtools.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

void sleepFor(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

/// "verb:TEXT" or "verb:NAME:rest"; NAME chooses the progress.
struct Step {
    std::string verb, text, name, rest;

    explicit Step(const std::string& word) {
        const std::size_t first = std::min(word.find(':'), word.size());
        verb = word.substr(0, first);
        text = word.substr(std::min(first + 1, word.size()));
        const std::size_t second = std::min(text.find(':'), text.size());
        name = text.substr(0, second);
        rest = text.substr(std::min(second + 1, text.size()));
    }
    double number() const { return std::atof(rest.c_str()); }
};

bool talk(const Step& step) {
    const char* const text = step.text.c_str();
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
    else if (step.verb == "command")
        tty_end((tty_msg(tty_start(text), "output of %s", text), 0));
    else if (step.verb == "half")
        std::fflush((std::fputs(text, stdout), stdout));
    else if (step.verb == "ask")
        print_msg("reply %d", static_cast<int>(KazIODirector::confirm(
                                  text, "Sure?", KazIODirector::YesNo, KazIODirector::Accept)));
    else
        return false;
    return true;
}

bool act(const Step& step) {
    if (step.verb == "sleep")
        sleepFor(std::atoi(step.text.c_str()));
    else if (step.verb == "raise")
        std::raise(std::atoi(step.text.c_str()));
    else if (step.verb == "shell")
        shell_cmd(step.text.c_str());
    else if (step.verb == "second")
        KazProgressHandle("Second", 1).increment(100, false);
    else
        return step.verb == "console" || step.verb == "deaf";
    return true;
}

class StepTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        const arg_type_enum taken[] = {arg_progress_channel, arg_end};
        const arg_type_enum none[] = {arg_end};
        const std::string first = argc > 1 ? argv[1] : "";
        const bool isDeaf = first == "deaf";
        if (!kaz_arg_parse(argc, argv, nullptr, isDeaf ? none : taken, 0, false) && !isDeaf)
            return 2;
        for (int i = 0; const char* word = kaz_arg_get_untagged(i); ++i)
            words_.emplace_back(word);
        KazTerminalDirector director;
        if (first != "console")
            director.install();
        const KazInterruptWatch watch;
        const int status = obey();
        handles_.clear(); // which the director sees
        return status;
    }

    int obey() {
        while (next_ < words_.size())
            if (const Step step(words_[next_++]); step.verb == "exit")
                return std::atoi(step.text.c_str());
            else if (!talk(step) && !act(step))
                report(step);
        return 0;
    }

    static void undo(void* app) {
        print_msg("undone by %s", static_cast<StepTool*>(app)->getAppName());
    }

    void report(const Step& step) {
        if (step.verb == "start") { // start:NAME:TOTAL:TITLE
            const std::size_t colon = step.rest.find(':');
            handles_[step.name] = std::make_unique<KazProgressHandle>(
                KazString(step.rest.c_str() + colon + 1), std::atoi(step.rest.c_str()));
            handles_[step.name]->setCancelHandler(undo, this);
            return;
        }
        KazProgressHandle& handle = *handles_.at(step.name);
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
            handles_.erase(step.name);
        else if (step.verb == "wait")
            for (int i = std::atoi(step.rest.c_str()); i > 0; i -= 10, handle.checkCancel())
                sleepFor(10);
        else if (step.verb == "run")
            run(handle, step.number());
    }

    /// run:NAME:SHARE COUNT WORD...; "@" in front of a word stands for a dash, which would make
    /// it an option of this tool's.
    void run(KazProgressHandle& handle, double share) {
        std::vector<const char*> child;
        for (int count = std::atoi(words_.at(next_++).c_str()); count > 0; --count) {
            std::string& word = words_.at(next_++);
            if (word.starts_with('@'))
                word[0] = '-';
            child.push_back(word.c_str());
        }
        child.push_back(nullptr);
        print_msg("status %d", kazRunTool(handle, share, child.data()));
    }

    std::vector<std::string> words_;
    std::size_t next_ = 0;
    std::map<std::string, std::unique_ptr<KazProgressHandle>> handles_;
};

StepTool theTool;

} // namespace
