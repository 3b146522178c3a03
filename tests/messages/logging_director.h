// SPDX-License-Identifier: Apache-2.0
/// @file
/// A director that listens, down to the operations that the console ignores.
#pragma once

#include "tools/messages/KazIODirector.h"
#include "tools/util/gu_set.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

using Log = std::vector<std::string>;

/// Notes each of these operations that reaches it, with its arguments, and shows
/// nothing. The commands' output and the questions are the console's.
class LoggingDirector : public KazIODirector {
public:
    int final = 0;

    void giveUp() { fallBack(); }
    Log takeLog() { return std::exchange(log, {}); }

protected:
    void doPrintMsg(const char* format, va_list args) override { add("msg", format, args); }
    void doPrintError(const char* format, va_list args) override { add("error", format, args); }
    void doFatalError(const char* format, va_list args) override { add("fatal", format, args); }
    void doPrintSymMsg(gu_set* symbols, const char* format, va_list args) override {
        add("symMsg" + taken(symbols), format, args);
    }
    void doPrintSymError(gu_set* symbols, const char* format, va_list args) override {
        add("symError" + taken(symbols), format, args);
    }
    int doProgressStart(KazString title, int total) override {
        return note("start %s,%d", title.getValue(), total), 77;
    }
    void doProgressIncrement(int id, double amount, bool flag) override {
        note("increment %d,%g,%d", id, amount, flag);
    }
    void doProgressMsg(int id, int level, const char* format, va_list args) override {
        add("progressMsg " + std::to_string(id) + "," + std::to_string(level), format, args);
    }
    void doProgressEnd(int id) override { note("end %d", id); }
    bool isCancelPending(int id) override { return note("isCancelPending %d", id), true; }
    int isFinal() override { return final; }
    void doAddCallback(int a, int b) override { note("addCallback %d,%d", a, b); }
    void doRemoveCallback(int a, int b) override { note("removeCallback %d,%d", a, b); }
    void doNotify(int event) override { note("notify %d", event); }
    void doStartSubProgress(int id, double share, int total) override {
        note("startSub %d,%g,%d", id, share, total);
    }
    void doEndSubProgress(int id) override { note("endSub %d", id); }
    void doReset(int id) override { note("reset %d", id); }

private:
    KAZ_PRINTF(3, 0) void add(const std::string& what, const char* format, va_list args) {
        char text[4096];
        std::vsnprintf(text, sizeof text, format, args);
        log.push_back(what.empty() ? text : what + " " + text);
    }
    KAZ_PRINTF(2, 3) void note(const char* format, ...) {
        va_list args;
        va_start(args, format);
        add("", format, args);
        va_end(args);
    }
    /// The elements of the set, which is this director's to release.
    static std::string taken(gu_set* symbols) {
        std::string text;
        for (auto i = gu_set_init(symbols); !gu_set_done(i); gu_set_next(&i))
            text += " " + std::to_string(reinterpret_cast<std::intptr_t>(gu_set_element(i)));
        gu_set_destroy(symbols);
        return text;
    }

    Log log;
};

/// Brings the process back to the state before any director was used. Only where
/// no other director is alive: the one in force is then the console's.
inline void removeConsoleDirector() {
    delete KazIODirector::getInstance();
}
