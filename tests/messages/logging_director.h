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
    bool cancel = true;

    void giveUp() { fallBack(); }

    std::vector<std::string> takeLog() { return std::exchange(log, {}); }

    static std::string formatted(const char* format, va_list args) KAZ_PRINTF(1, 0) {
        char text[4096];
        std::vsnprintf(text, sizeof text, format, args);
        return text;
    }

protected:
    int doTtyStart(const char* command) override {
        note("ttyStart " + std::string(command));
        return 42;
    }
    void doTtyEnd(int ttyId) override { note("ttyEnd " + std::to_string(ttyId)); }
    void doTtyMsg(int ttyId, const char* format, va_list args) override {
        note("ttyMsg " + std::to_string(ttyId) + " " + formatted(format, args));
    }
    void doPrintMsg(const char* format, va_list args) override {
        note("msg " + formatted(format, args));
    }
    void doPrintError(const char* format, va_list args) override {
        note("error " + formatted(format, args));
    }
    void doFatalError(const char* format, va_list args) override {
        note("fatal " + formatted(format, args));
    }
    void doPrintSymMsg(_gu_set_struct_* symbols, const char* format, va_list args) override {
        note("symMsg " + taken(symbols) + formatted(format, args));
    }
    void doPrintSymError(_gu_set_struct_* symbols, const char* format, va_list args) override {
        note("symError " + taken(symbols) + formatted(format, args));
    }
    Reply doConfirm(const KazString& title, const KazString& message, DialogType type,
                    Reply defaultReply) override {
        note(std::string("confirm ") + title.getValue() + "," + message.getValue() + "," +
             std::to_string(type) + "," + std::to_string(defaultReply));
        return Ignore;
    }
    bool doGetUserInput(KazString& result, const KazString& title, const KazString& prompt,
                        bool echo) override {
        note(std::string("input ") + title.getValue() + "," + prompt.getValue() +
             (echo ? ",shown" : ",hidden"));
        result = "answer";
        return true;
    }
    int doProgressStart(KazString title, int total) override {
        note(std::string("progressStart ") + title.getValue() + "," + std::to_string(total));
        return 77;
    }
    void doProgressIncrement(int progressId, double amount, bool flag) override {
        note("progressIncrement " + std::to_string(progressId) + "," + std::to_string(amount) +
             (flag ? ",absolute" : ",relative"));
    }
    void doProgressMsg(int progressId, int level, const char* format, va_list args) override {
        note("progressMsg " + std::to_string(progressId) + "," + std::to_string(level) + " " +
             formatted(format, args));
    }
    void doProgressEnd(int progressId) override {
        note("progressEnd " + std::to_string(progressId));
    }
    bool isCancelPending(int progressId) override {
        note("isCancelPending " + std::to_string(progressId));
        return cancel;
    }
    int isFinal() override { return final; }
    void doAddCallback(int a, int b) override { noteNumbers("addCallback", a, b); }
    void doRemoveCallback(int a, int b) override { noteNumbers("removeCallback", a, b); }
    void doNotify(int event) override { note("notify " + std::to_string(event)); }
    void doStartSubProgress(int progressId, double share, int total) override {
        note("startSubProgress " + std::to_string(progressId) + "," + std::to_string(share) + "," +
             std::to_string(total));
    }
    void doEndSubProgress(int progressId) override {
        note("endSubProgress " + std::to_string(progressId));
    }
    void doReset(int progressId) override { note("reset " + std::to_string(progressId)); }

private:
    void note(const std::string& entry) { log.push_back(entry); }
    void noteNumbers(const char* name, int a, int b) {
        note(std::string(name) + " " + std::to_string(a) + "," + std::to_string(b));
    }
    /// The elements of the set, which is this director's to release.
    static std::string taken(_gu_set_struct_* symbols) {
        std::string text = "{";
        for (auto i = gu_set_init(symbols); !gu_set_done(i); gu_set_next(&i))
            text += std::to_string(reinterpret_cast<std::intptr_t>(gu_set_element(i))) + ";";
        gu_set_destroy(symbols);
        return text + "} ";
    }
};

/// Brings the process back to the state before any director was used. Only where
/// no other director is alive: the one in force is then the console's.
inline void removeConsoleDirector() {
    delete KazIODirector::getInstance();
}
