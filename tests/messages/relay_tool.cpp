// SPDX-License-Identifier: Apache-2.0
// A tool that does what its arguments say and runs tools, itself among them.

#include "tools/moxtools.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

class RelayTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        const arg_type_enum taken[] = {arg_progress_channel, arg_end};
        const arg_type_enum none[] = {arg_end};
        const bool isDeaf = argc > 1 && std::string(argv[1]) == "deaf";
        if (!kaz_arg_parse(argc, argv, nullptr, isDeaf ? none : taken, 0, false) && !isDeaf)
            return 2;
        for (int i = 0; const char* word = kaz_arg_get_untagged(i); ++i)
            words_.emplace_back(word);
        static KazTerminalDirector director;
        director.install();
        const KazInterruptWatch watch;
        while (next_ < words_.size())
            if (const std::string step = word(); step == "exit")
                return number();
            else
                perform(step);
        return 0;
    }

    std::string word() { return next_ < words_.size() ? words_[next_++] : ""; }
    int number() { return std::atoi(word().c_str()); }

    static void undo() { print_msg("undone by %s", theApp->getAppName()); }

    void perform(const std::string& step) {
        if (step == "start") {
            handle_ = std::make_unique<KazProgressHandle>(word().c_str(), 1);
            handle_->setCancelHandler(undo);
        } else if (step == "add") {
            handle_->increment(number(), false);
        } else if (step == "tell") {
            handle_->msg(1, "%s", word().c_str());
        } else if (step == "end") {
            handle_.reset();
        } else if (step == "say") {
            print_msg("%s", word().c_str());
        } else if (step == "err") {
            print_err("%s", word().c_str());
        } else if (step == "half") {
            std::fputs(word().c_str(), stdout);
            std::fflush(stdout);
        } else if (step == "ask") {
            print_msg("reply %d", static_cast<int>(KazIODirector::confirm(
                                      "Q", "?", KazIODirector::YesNo, KazIODirector::Accept)));
        } else if (step == "sleep") {
            for (int i = number(); i > 0; i -= 10, handle_->checkCancel())
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
        } else if (step == "raise") {
            std::raise(number());
        } else if (step == "shell") {
            shell_cmd(word().c_str());
        } else if (step == "second") {
            KazProgressHandle("Second", 1).increment(100, false);
        } else if (step == "run") {
            run();
        }
    }

    /// SHARE COUNT WORD...; "@" in front of a word stands for a dash, which would make it an
    /// option of this tool's.
    void run() {
        const int share = number();
        std::vector<std::string> line;
        for (int count = number(); count > 0; --count)
            if (std::string& each = line.emplace_back(word()); each[0] == '@')
                each[0] = '-';
        std::vector<const char*> child;
        for (const std::string& each : line)
            child.push_back(each.c_str());
        child.push_back(nullptr);
        print_msg("status %d", kazRunTool(*handle_, share, child.data()));
    }

    static KazApp* theApp;
    std::vector<std::string> words_;
    std::size_t next_ = 0;
    std::unique_ptr<KazProgressHandle> handle_;
};

RelayTool theTool;
KazApp* RelayTool::theApp = &theTool;

} // namespace
