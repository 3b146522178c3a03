/// @file
/// A director that overrides every operation.
#pragma once

#include "tools/messages/KazIODirector.h"
#include "tools/util/gu_set.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

/// Notes each operation that reaches it, with its arguments, and shows nothing.
class LoggingDirector : public KazIODirector {
public:
    std::vector<std::string> log;
    int final = 0;

    void giveUp() { fallBack(); }
    std::vector<std::string> takeLog() { return std::exchange(log, {}); }

protected:
    using Text = const KazString&;

    int doTtyStart(const char* command) override { return note("ttyStart %s", command), 42; }
    void doTtyEnd(int id) override { note("ttyEnd %d", id); }
    void doTtyMsg(int id, const char* format, va_list args) override {
        note("ttyMsg %d %s", id, formatted(format, args).c_str());
    }
    void doPrintMsg(const char* format, va_list args) override {
        note("msg %s", formatted(format, args).c_str());
    }
    void doPrintError(const char* format, va_list args) override {
        note("error %s", formatted(format, args).c_str());
    }
    void doFatalError(const char* format, va_list args) override {
        note("fatal %s", formatted(format, args).c_str());
    }
    void doPrintSymMsg(gu_set* symbols, const char* format, va_list args) override {
        note("symMsg {%s} %s", taken(symbols).c_str(), formatted(format, args).c_str());
    }
    void doPrintSymError(gu_set* symbols, const char* format, va_list args) override {
        note("symError {%s} %s", taken(symbols).c_str(), formatted(format, args).c_str());
    }
    Reply doConfirm(Text title, Text message, DialogType type, Reply reply) override {
        note("confirm %s,%s,%d,%d", title.getValue(), message.getValue(), type, reply);
        return Ignore;
    }
    bool doGetUserInput(KazString& result, Text title, Text prompt, bool echo) override {
        note("input %s,%s,%d", title.getValue(), prompt.getValue(), echo);
        result = "answer";
        return true;
    }
    int doProgressStart(KazString title, int total) override {
        return note("progressStart %s,%d", title.getValue(), total), 77;
    }
    void doProgressIncrement(int id, double amount, bool flag) override {
        note("progressIncrement %d,%g,%d", id, amount, flag);
    }
    void doProgressMsg(int id, int level, const char* format, va_list args) override {
        note("progressMsg %d,%d %s", id, level, formatted(format, args).c_str());
    }
    void doProgressEnd(int id) override { note("progressEnd %d", id); }
    bool isCancelPending(int id) override { return note("isCancelPending %d", id), true; }
    int isFinal() override { return final; }
    void doAddCallback(int a, int b) override { note("addCallback %d,%d", a, b); }
    void doRemoveCallback(int a, int b) override { note("removeCallback %d,%d", a, b); }
    void doNotify(int event) override { note("notify %d", event); }
    void doStartSubProgress(int id, double share, int total) override {
        note("startSubProgress %d,%g,%d", id, share, total);
    }
    void doEndSubProgress(int id) override { note("endSubProgress %d", id); }
    void doReset(int id) override { note("reset %d", id); }

private:
    static std::string formatted(const char* format, va_list args) KAZ_PRINTF(1, 0) {
        char text[4096];
        std::vsnprintf(text, sizeof text, format, args);
        return text;
    }
    void note(const char* format, ...) KAZ_PRINTF(2, 3) {
        va_list args;
        va_start(args, format);
        log.push_back(formatted(format, args));
        va_end(args);
    }
    /// The elements of the set, which is this director's to release.
    static std::string taken(gu_set* symbols) {
        std::string text;
        for (auto i = gu_set_init(symbols); !gu_set_done(i); gu_set_next(&i))
            text += std::to_string(reinterpret_cast<std::intptr_t>(gu_set_element(i))) + ";";
        gu_set_destroy(symbols);
        return text;
    }
};

/// Brings the process back to the state before any director was used. Only where
/// no other director is alive: the one in force is then the console's.
inline void removeConsoleDirector() {
    delete KazIODirector::getInstance();
}
