// SPDX-License-Identifier: Apache-2.0
// Directors are a chain: the one in force knows the one that it replaced. Everything that a tool
// says passes the static functions here: what is recorded is recorded by them, progress goes to a
// parent that asked for it, and all else to the director in force, or to the console once that
// director has fallen back with nobody before it.
//
// A director's end is the delicate part, since others may name it as theirs to fall back to. So
// all living directors are listed, and one that goes is taken out of every chain.
#include "tools/messages/KazIODirector.h"

#include "tools/messages/detail/Dialogue.h"
#include "tools/messages/detail/ParentProgress.h"
#include "tools/messages/messages.h"
#include "tools/messages/trace.h"

#include <utility>
#include <vector>

using kaz::detail::Dialogue;
using kaz::detail::ParentProgress;

namespace {

/// Every director alive. One that goes must not stay behind as the director
/// that another falls back to. Never destroyed: directors may be static.
std::vector<KazIODirector*>& liveDirectors() {
    static auto* const directors = new std::vector<KazIODirector*>;
    return *directors;
}

} // namespace

constinit KazIODirector* KazIODirector::theIODirector = nullptr;

KazIODirector::KazIODirector() : fallenBack_(false), previous_(nullptr), progressIdCounter_(0) {
    liveDirectors().push_back(this);
}

KazIODirector::~KazIODirector() {
    std::erase(liveDirectors(), this);
    KazIODirector* const successor = previous_ == this ? nullptr : previous_;
    if (theIODirector == this)
        theIODirector = successor;
    for (KazIODirector* director : liveDirectors())
        if (director->previous_ == this)
            director->previous_ = successor;
    progressMap_.clear();
}

KazIODirector* KazIODirector::getInstance() {
    if (theIODirector == nullptr)
        // Never destroyed: it serves static objects to the very end.
        theIODirector = new KazIODirector;
    return theIODirector;
}

void KazIODirector::install() {
    // Also of one that is refused: what it falls back to is the one in force. One that is installed
    // twice is its own predecessor, which the destructor minds.
    previous_ = theIODirector;
    if (theIODirector != nullptr && theIODirector->isFinal() != 0) {
        KAZ_TRACE("messages", "director not installed: the one in force is final");
        return;
    }
    theIODirector = this;
}

/// The director before takes over at once; where there was none, this one stays installed and its
/// console operations are called past the virtual table.
void KazIODirector::fallBack() {
    KAZ_TRACE("messages", "director falls back to %s",
              previous_ != nullptr ? "the one before" : "the console");
    if (previous_ != nullptr)
        theIODirector = previous_;
    else
        fallenBack_ = true;
}

// The operation of the director in force, or the console's once it has fallen
// back. A macro, because only a qualified call goes past the virtual table.
#define DIRECT(operation, ...)                                                                     \
    KazIODirector* const director = getInstance();                                                 \
    return director->fallenBack_ ? director->KazIODirector::operation(__VA_ARGS__)                 \
                                 : director->operation(__VA_ARGS__)

// What the user is told is recorded before the director says it, as that may be the last
// thing that this process does; what the user answers, behind the answer.
#define RECORD(line)                                                                               \
    if (Dialogue::isOn())                                                                          \
    Dialogue::line

int KazIODirector::ttyStart(const char* command) {
    RECORD(commandStart(command));
    DIRECT(doTtyStart, command);
}

void KazIODirector::ttyEnd(int ttyId) {
    RECORD(commandEnd());
    DIRECT(doTtyEnd, ttyId);
}

void KazIODirector::vttyMsg(int ttyId, const char* format, va_list args) {
    RECORD(text("command-output", format, args));
    DIRECT(doTtyMsg, ttyId, format, args);
}

void KazIODirector::vprintMsg(const char* format, va_list args) {
    RECORD(text("message", format, args));
    DIRECT(doPrintMsg, format, args);
}

void KazIODirector::vprintError(const char* format, va_list args) {
    RECORD(text("error", format, args));
    DIRECT(doPrintError, format, args);
}

void KazIODirector::vfatalError(const char* format, va_list args) {
    RECORD(text("fatal", format, args));
    DIRECT(doFatalError, format, args);
}

void KazIODirector::vprintSymMsg(_gu_set_struct_* symbols, const char* format, va_list args) {
    RECORD(symbols("symbol-message", symbols, format, args));
    DIRECT(doPrintSymMsg, symbols, format, args);
}

void KazIODirector::vprintSymError(_gu_set_struct_* symbols, const char* format, va_list args) {
    RECORD(symbols("symbol-error", symbols, format, args));
    DIRECT(doPrintSymError, symbols, format, args);
}

KazIODirector::Reply KazIODirector::confirm(const KazString& title, const KazString& message,
                                            DialogType type, Reply defaultReply) {
    const auto ask = [&] { DIRECT(doConfirm, title, message, type, defaultReply); };
    const Reply reply = ask();
    RECORD(question(title, message, type, defaultReply, reply));
    return reply;
}

bool KazIODirector::getUserInput(KazString& result, const KazString& title, const KazString& prompt,
                                 bool echo) {
    const auto ask = [&] { DIRECT(doGetUserInput, result, title, prompt, echo); };
    const bool given = ask();
    RECORD(input(title, prompt, echo, given, result));
    return given;
}

int KazIODirector::progressStart(KazString title, int total) {
    // The director gets the title itself, and the number that the record needs comes from it.
    const KazString kept = Dialogue::isOn() ? title : KazString();
    const auto begin = [&] { DIRECT(doProgressStart, std::move(title), total); };
    // The first one to begin is the parent's; the director is given the others.
    const bool isTold = ParentProgress::isOffered() && ParentProgress::begin();
    const int progressId = isTold ? ParentProgress::number : begin();
    RECORD(progressStart(progressId, kept, total));
    return progressId;
}

void KazIODirector::progressIncrement(int progressId, double amount, bool flag) {
    RECORD(progressIncrement(progressId, amount, flag));
    if (ParentProgress::isTold(progressId))
        return ParentProgress::increment(amount, flag);
    DIRECT(doProgressIncrement, progressId, amount, flag);
}

void KazIODirector::vProgressMsg(int progressId, int level, const char* format, va_list args) {
    RECORD(progressMessage(level, format, args));
    if (ParentProgress::isTold(progressId)) {
        // The parent shows lines, and the console would begin this one with another.
        DIRECT(doPrintMsg, format, args);
    }
    DIRECT(doProgressMsg, progressId, level, format, args);
}

void KazIODirector::progressEnd(int progressId) {
    RECORD(progressEnd(progressId));
    if (ParentProgress::isTold(progressId))
        return ParentProgress::end();
    DIRECT(doProgressEnd, progressId);
}

void KazIODirector::reset(int progressId) {
    RECORD(progressReset(progressId));
    if (ParentProgress::isTold(progressId))
        return ParentProgress::reset();
    DIRECT(doReset, progressId);
}

#undef RECORD
#undef DIRECT

// The console has no cancellation and no callbacks to fall back to: a director
// that has fallen back is not asked at all.

bool KazIODirector::cancelPending(int progressId) {
    KazIODirector* const director = getInstance();
    return !director->fallenBack_ && director->isCancelPending(progressId);
}

void KazIODirector::addCallback(int first, int second) {
    if (KazIODirector* const director = getInstance(); !director->fallenBack_)
        director->doAddCallback(first, second);
}

void KazIODirector::removeCallback(int first, int second) {
    if (KazIODirector* const director = getInstance(); !director->fallenBack_)
        director->doRemoveCallback(first, second);
}

void KazIODirector::notify(int event) {
    if (KazIODirector* const director = getInstance(); !director->fallenBack_)
        director->doNotify(event);
}

void KazIODirector::printMsg(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vprintMsg(format, args);
    va_end(args);
}

void KazIODirector::printError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vprintError(format, args);
    va_end(args);
}

void KazIODirector::fatalError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vfatalError(format, args);
    va_end(args);
}

void KazIODirector::ttyMsg(int ttyId, const char* format, ...) {
    va_list args;
    va_start(args, format);
    vttyMsg(ttyId, format, args);
    va_end(args);
}

void KazIODirector::progressMsg(int progressId, int level, const char* format, ...) {
    va_list args;
    va_start(args, format);
    vProgressMsg(progressId, level, format, args);
    va_end(args);
}

// Second names of the four functions above, not functions of their own. An alias
// has to be defined beside its target and names it as the linker does.
void print_msg(const char* format, ...) __attribute__((alias("_ZN13KazIODirector8printMsgEPKcz")));
void print_err(const char* format, ...)
    __attribute__((alias("_ZN13KazIODirector10printErrorEPKcz")));
void fatal_err(const char* format, ...)
    __attribute__((alias("_ZN13KazIODirector10fatalErrorEPKcz")));
void tty_msg(int ttyId, const char* format, ...)
    __attribute__((alias("_ZN13KazIODirector6ttyMsgEiPKcz")));
