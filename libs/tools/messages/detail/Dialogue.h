// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a tool and its user say to each other, written down as it happens.
#pragma once

#include "tools/export.h"
#include "tools/messages/KazIODirector.h"

#include <cstdarg>

namespace kaz::detail {

/// Asked for by the environment variable KAZ_DIALOGUE; docs/dialogue.md describes the
/// lines. It listens where every message passes, before any director: tools put their own
/// in front and call the console's operations directly, so that none of them hears all.
///
/// Who reports something asks isOn() first: a dialogue that nobody wants costs one look at
/// a flag. Nothing here changes what the tool does. A line that cannot be written, for want
/// of memory too, ends the recording, which is said once on the error channel.
class Dialogue {
public:
    static bool isOn() { return isOn_; }

    /// Begins the recording that the environment asks for, if it does. FILE is written anew
    /// by the outermost tool alone; with "+FILE" each tool appends, with time and process.
    static void start(int argc, const char* const* argv);
    /// The last line; nothing is written after it.
    static void end(int status);

    /// A line of the kind @p event with a formatted text. @p args stays unread.
    static void text(const char* event, const char* format, va_list args) KAZ_PRINTF(2, 0);
    /// The same with a set of symbols, which may be null.
    static void symbols(const char* event, const _gu_set_struct_* symbols, const char* format,
                        va_list args) KAZ_PRINTF(3, 0);
    static void commandStart(const char* command);
    static void commandEnd();
    static void question(const KazString& title, const KazString& text, int type, int defaultReply,
                         int reply);
    /// What was typed, @p text, is written only when it was to be seen.
    static void input(const KazString& title, const KazString& prompt, bool echo, bool given,
                      const KazString& text);
    static void trace(const char* topic, const char* text);

    static void progressStart(int id, const KazString& title, int total);
    static void progressIncrement(int id, double amount, bool absolute);
    static void progressMessage(int level, const char* format, va_list args) KAZ_PRINTF(2, 0);
    static void progressReset(int id);
    static void progressEnd(int id);
    static void stepStart(int id, double share);
    static void stepEnd(int id);

private:
    static void settle(int reason);
    static void tellPercent(int id);

    static bool isOn_;
};

} // namespace kaz::detail
