// SPDX-License-Identifier: Apache-2.0
#include "kit/director.h"

#include <cstdio>

namespace kit {

namespace {

std::string formatted(const char* format, va_list args) {
    char* text = nullptr;
    const int length = vasprintf(&text, format, args);
    std::string result(length > 0 ? text : "");
    std::free(text);
    return result;
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

} // namespace kit
