// SPDX-License-Identifier: Apache-2.0
// A message of the progress is printed as well. The text is formatted once, and the result goes
// through a printf again as a format that asks for nothing, because that is all that the director
// takes.
#include "tools/messages/KazMsgProgressHandle.h"

#include "tools/messages/KazIODirector.h"

#include <cstdio>
#include <utility>

namespace {

constexpr std::size_t textSize = 2048; // the terminator included

/// Prints a format that asks for no arguments.
void printPlain(const char* format, ...) {
    va_list none;
    va_start(none, format);
    KazIODirector::vprintMsg(format, none);
    va_end(none);
}

/// @p text as a format that reads no arguments: every percent sign comes out as
/// one, a pair of them as one too.
KazString withoutConversions(const char* text) {
    KazString format;
    for (const char* c = text; *c != '\0'; ++c) {
        format.append(*c);
        if (*c != '%')
            continue;
        format.append('%');
        if (c[1] == '%')
            ++c;
    }
    return format;
}

} // namespace

KazMsgProgressHandle::KazMsgProgressHandle(KazString name, int n)
    : KazProgressHandle(std::move(name), n) {}
KazMsgProgressHandle::~KazMsgProgressHandle() = default;

void KazMsgProgressHandle::vMsg(int level, const char* format, va_list args) {
    // The arguments can be read only once.
    va_list again;
    va_copy(again, args);
    KazProgressHandle::vMsg(level, format, args);
    char text[textSize];
    text[0] = '\0';
    if (format != nullptr)
        // What does not fit is cut off.
        std::vsnprintf(text, sizeof text, format, again);
    va_end(again);
    printPlain(withoutConversions(text).getValue());
}
