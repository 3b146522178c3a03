// SPDX-License-Identifier: Apache-2.0
// A handle is a number: the progress itself is the director's, or the parent's where this tool is
// one step of another one. Both are asked anew at each call, because the director may change
// while the handle lives. The layout has room for a plain cancel handler only, so handlers with
// data lie in a list beside, found by the number.
#include "tools/messages/KazProgressHandle.h"

#include "tools/messages/KazIODirector.h"
#include "tools/messages/detail/Dialogue.h"
#include "tools/messages/detail/ParentProgress.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

using kaz::detail::Dialogue;
using kaz::detail::ParentProgress;

namespace {

constexpr int cancelledStatus = 9;

/// Reads a number up to @p end; null when there is none.
const char* readNumber(const char* text, const char* end, int& number) {
    const auto [rest, error] = std::from_chars(text, end, number);
    return error == std::errc() ? rest : nullptr;
}

/// A cancel handler with data. The handle has room for a plain function only, and tools are
/// built against its layout.
struct DataHandler {
    int id; ///< of its progress
    void (*handler)(void*);
    void* data;
};

std::vector<DataHandler>& dataHandlers() {
    // Never destroyed: static objects of a tool may hold handles to the very end.
    static std::vector<DataHandler>& handlers = *new std::vector<DataHandler>;
    return handlers;
}

void removeDataHandler(int id) {
    std::erase_if(dataHandlers(), [id](const DataHandler& each) { return each.id == id; });
}

/// In a handle it stands for the handler with data of its progress.
void dataHandlerMark() {}

void runHandler(void (*handler)(), int id) {
    if (handler != dataHandlerMark)
        return handler();
    for (const DataHandler& each : dataHandlers())
        if (each.id == id)
            return each.handler(each.data);
}

} // namespace

KazProgressHandle::KazProgressHandle(KazString name, int n)
    : id_(KazIODirector::progressStart(std::move(name), n)) {}

KazProgressHandle::~KazProgressHandle() {
    if (cancelHandler_ == dataHandlerMark)
        removeDataHandler(id_);
    KazIODirector::progressEnd(id_);
}

bool KazProgressHandle::cancelPending() {
    return KazIODirector::cancelPending(id_);
}

void KazProgressHandle::increment(double delta, bool absolute) {
    KazIODirector::progressIncrement(id_, delta, absolute);
    if (cancelHandler_ != nullptr)
        checkCancel();
}

void KazProgressHandle::msg(int level, const char* format, ...) {
    va_list args;
    va_start(args, format);
    vMsg(level, format, args);
    va_end(args);
}

void KazProgressHandle::vMsg(int level, const char* format, va_list args) {
    KazIODirector::vProgressMsg(id_, level, format, args);
    if (cancelHandler_ != nullptr)
        checkCancel();
}

/// The recording follows the step itself, whoever shows it.
void KazProgressHandle::startSubProgress(double share, int n) {
    if (Dialogue::isOn())
        Dialogue::stepStart(id_, share);
    if (ParentProgress::isTold(id_))
        return ParentProgress::startStep(share);
    KazIODirector::getInstance()->doStartSubProgress(id_, share, n);
}

void KazProgressHandle::endSubProgress() {
    if (Dialogue::isOn())
        Dialogue::stepEnd(id_);
    if (ParentProgress::isTold(id_))
        return ParentProgress::endStep();
    KazIODirector::getInstance()->doEndSubProgress(id_);
}

KazString KazProgressHandle::asCmdLine(int a, int b) {
    KazString option;
    option.format(" -progress_channel %d:%d", id_, a);
    if (b != 0)
        option.appendFormat(":%d", b);
    return option;
}

/// Two or three numbers with colons between; nothing is stored unless the whole text is a
/// channel.
bool KazProgressHandle::parseChannel(const char* channel, int& id, int& a, int& b) {
    if (channel == nullptr)
        return false;
    const char* const end = channel + std::strlen(channel);
    const char* next = channel;
    int numbers[3] = {};
    for (int count = 0; count < 3; ++count) {
        next = readNumber(next, end, numbers[count]);
        if (next == nullptr)
            return false;
        if (next == end && count > 0) {
            id = numbers[0];
            a = numbers[1];
            b = numbers[2];
            return true;
        }
        if (*next++ != ':')
            return false;
    }
    return false;
}

void KazProgressHandle::setCancelHandler(void (*handler)()) {
    cancelHandler_ = handler;
}

void KazProgressHandle::setCancelHandler(void (*handler)(void* data), void* data) {
    removeDataHandler(id_);
    cancelHandler_ = nullptr;
    if (handler == nullptr)
        return;
    dataHandlers().push_back({id_, handler, data});
    cancelHandler_ = dataHandlerMark;
}

void KazProgressHandle::checkCancel() {
    if (!cancelPending())
        return;
    // Taken off first: a handler that reports progress itself is not called again.
    if (const auto handler = std::exchange(cancelHandler_, nullptr)) {
        try {
            runHandler(handler, id_);
        } catch (...) {
            cancelHandler_ = handler; // the tool goes on, and is asked to stop again
            throw;
        }
    }
    // The recording ends with the status that the process will have.
    Dialogue::end(cancelledStatus);
    std::exit(cancelledStatus);
}

void KazProgressHandle::reset() {
    KazIODirector::reset(id_);
}
