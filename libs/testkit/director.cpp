// SPDX-License-Identifier: Apache-2.0
// Nothing is shown and nobody is asked: texts are noted, and answers come from the queues that a
// test has filled. An empty queue gives the default answer, and no input.
#include "testkit/director.h"

#include <cstdio>

namespace moxkit {

namespace {

// In memory of its own, so that a note without memory ends as any other allocation does.
std::string formatted(const char* format, va_list args) {
    va_list again;
    va_copy(again, args);
    // The list can be walked once only, so the copy is measured.
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, args);
    return text;
}

std::string asked(const KazString& title, const KazString& text) {
    return std::string(title.getValue()) + ": " + text.getValue();
}

} // namespace

RecordingDirector::RecordingDirector() {
    install();
}

void RecordingDirector::doPrintMsg(const char* format, va_list args) {
    messages.push_back(formatted(format, args));
}

void RecordingDirector::doPrintError(const char* format, va_list args) {
    errors.push_back(formatted(format, args));
}

void RecordingDirector::doFatalError(const char* format, va_list args) {
    fatals.push_back(formatted(format, args));
}

KazIODirector::Reply RecordingDirector::doConfirm(const KazString& title, const KazString& message,
                                                  DialogType, Reply reply) {
    questions.push_back(asked(title, message));
    if (replies.empty())
        return reply;
    reply = replies.front();
    replies.pop_front();
    return reply;
}

bool RecordingDirector::doGetUserInput(KazString& result, const KazString& title,
                                       const KazString& prompt, bool) {
    questions.push_back(asked(title, prompt));
    if (inputs.empty())
        return false;
    const std::string input = inputs.front();
    inputs.pop_front();
    if (!input.empty())
        result = input.c_str();
    return !input.empty();
}

} // namespace moxkit
