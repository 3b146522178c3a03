// SPDX-License-Identifier: Apache-2.0
// The flag is set while the file is open, and only then. A progress is followed here
// besides the director, because tools bring directors that know nothing of percentages;
// the number that the director gave it names it in every line.
#include "tools/messages/detail/Dialogue.h"

#include "tools/formats/encode.h"
#include "tools/messages/detail/JsonLine.h"
#include "tools/messages/detail/ProgressTrack.h"
#include "tools/messages/detail/dialogue_text.h"
#include "tools/platform/host.h"
#include "tools/platform/host_lines.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <map>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace kaz::detail {

constinit bool Dialogue::isOn_ = false;

namespace {

struct Followed {
    ProgressTrack track{ProgressTrack::Clock::time_point()};
    int told = 0; ///< whole percent
};

struct Recording {
    host::LineWriter file;
    std::string name;   ///< as the user spells it
    bool isLog = false; ///< each line says when, and of which process
    bool hasBegun = false;
    std::map<int, Followed> progresses;
};

/// Never destroyed, as static objects of a tool may speak to the very end. It is there without
/// memory, too: that a recording cannot be made must not end the tool.
Recording& recording() {
    alignas(Recording) static std::byte room[sizeof(Recording)];
    static Recording& kept = *new (room) Recording;
    return kept;
}

/// Before the tool has begun there is no director to be asked for, and none is made: a tool
/// finds what it would have found.
void complain(int reason) {
    const KazString name = kazPrintable(recording().name.c_str());
    const std::string text = std::string("KAZ_DIALOGUE: cannot write '") + name.getValue() +
                             "': " + host::errorText(reason);
    if (recording().hasBegun)
        KazIODirector::printError("%s", text.c_str());
    else
        std::fprintf(stderr, "%s\n", text.c_str());
}

/// 0, or why @p step could not be done. All that it throws is that memory ran out. A message
/// that is recorded may show errno ("%m").
template <typename Step>
int guarded(Step step) {
    const int before = errno;
    int reason = ENOMEM;
    try {
        reason = step();
    } catch (...) { // it is none of the tool's business
    }
    errno = before;
    return reason;
}

/// Writes the line that @p make gives: 0, or why it is not written.
template <typename Make>
int written(Make make) {
    return guarded([&] {
        JsonLine line = make();
        if (recording().isLog)
            line.add("time", dialogue::timeText()).add("pid", host::processId());
        // errno is taken here, before guarded() puts the tool's own back.
        return recording().file.write(line.finished()) == 0 ? 0 : errno;
    });
}

/// 0, or why it cannot be opened.
int open(const char* name, bool isLog) {
    Recording& kept = recording();
    kept.isLog = isLog;
    kept.name = name;
    kept.file = host::LineWriter(name, isLog);
    return kept.file.isOpen() ? 0 : errno;
}

Followed* find(int id) {
    const auto found = recording().progresses.find(id);
    return found != recording().progresses.end() ? &found->second : nullptr;
}

} // namespace

/// A recording that has failed once is over: one with gaps would tell something else than what
/// happened. It is switched off before the complaint, which passes the director and would be
/// recorded.
void Dialogue::settle(int reason) {
    if (reason == 0)
        return;
    isOn_ = false;
    recording().file = host::LineWriter();
    try {
        complain(reason);
    } catch (...) { // nor is there memory to say so
    }
}

void Dialogue::start(int argc, const char* const* argv) {
    const char* const wish = host::environment("KAZ_DIALOGUE");
    if (wish == nullptr || *wish == '\0')
        return;
    const bool isLog = *wish == '+';
    if (!isLog && host::environment("KAZCOREROOT") != nullptr)
        return; // the tool that has started this one is recorded
    // For settle(), which switches off what could not be opened.
    isOn_ = true;
    settle(guarded([&] { return open(isLog ? wish + 1 : wish, isLog); }));
    if (isOn_)
        settle(written([&] {
            return JsonLine("start")
                .add("tool", dialogue::toolName(argc, argv))
                .addPlain("argv", argc > 1 ? dialogue::listOf(argc - 1, argv + 1) : "[]")
                .add("library", MOXTOOLS_VERSION);
        }));
    recording().hasBegun = true;
}

void Dialogue::end(int status) {
    if (!isOn_)
        return;
    settle(written([&] { return JsonLine("end").add("status", status); }));
    isOn_ = false;
}

void Dialogue::text(const char* event, const char* format, va_list args) {
    settle(written([&] { return JsonLine(event).add("text", dialogue::textOf(format, args)); }));
}

void Dialogue::symbols(const char* event, const _gu_set_struct_* symbols, const char* format,
                       va_list args) {
    settle(written([&] {
        return JsonLine(event)
            .add("text", dialogue::textOf(format, args))
            .addPlain("symbols", dialogue::listOf(symbols));
    }));
}

void Dialogue::commandStart(const char* command) {
    settle(written([&] { return JsonLine("command-start").add("text", command); }));
}

void Dialogue::commandEnd() {
    settle(written([] { return JsonLine("command-end"); }));
}

void Dialogue::question(const KazString& title, const KazString& text, int type, int defaultReply,
                        int reply) {
    settle(written([&] {
        return JsonLine("question")
            .add("title", dialogue::viewOf(title))
            .add("text", dialogue::viewOf(text))
            .add("type", type)
            .add("default", defaultReply)
            .add("reply", reply);
    }));
}

void Dialogue::input(const KazString& title, const KazString& prompt, bool echo, bool given,
                     const KazString& text) {
    settle(written([&] {
        JsonLine line("input");
        line.add("title", dialogue::viewOf(title))
            .add("prompt", dialogue::viewOf(prompt))
            .add("echo", echo)
            .add("given", given);
        // What is typed without echo is a secret.
        if (echo && given)
            line.add("text", dialogue::viewOf(text));
        return line;
    }));
}

void Dialogue::trace(const char* topic, const char* text) {
    settle(written([&] { return JsonLine("trace").add("topic", topic).add("text", text); }));
}

void Dialogue::progressStart(int id, const KazString& title, int total) {
    settle(written([&] {
        // A director may give a number again, or one number to all.
        recording().progresses.insert_or_assign(id, Followed());
        return JsonLine("progress-start")
            .add("id", id)
            .add("title", dialogue::viewOf(title))
            .add("total", total);
    }));
}

void Dialogue::progressMessage(int level, const char* format, va_list args) {
    settle(written([&] {
        return JsonLine("progress-message")
            .add("text", dialogue::textOf(format, args))
            .add("level", level);
    }));
}

/// Time is of no interest here: whoever follows the progress may be slower.
constexpr ProgressTrack::Clock::time_point never;

/// Sums of fractions count as what they were meant to be.
int wholePercent(const ProgressTrack& track) {
    return static_cast<int>(track.percent() + 1e-6);
}

void Dialogue::progressIncrement(int id, double amount, bool absolute) {
    if (Followed* const progress = find(id)) {
        progress->track.increment(amount, absolute, never);
        tellPercent(id);
    }
}

void Dialogue::progressReset(int id) {
    if (Followed* const progress = find(id)) {
        progress->track.reset(never);
        tellPercent(id);
    }
}

/// Steps are followed and not told: they only change what a percentage stands for.
void Dialogue::stepStart(int id, double share) {
    if (Followed* const progress = find(id))
        settle(guarded([&] { return progress->track.push(share), 0; }));
}

void Dialogue::stepEnd(int id) {
    if (Followed* const progress = find(id)) {
        progress->track.pop(never);
        tellPercent(id);
    }
}

/// Whole percents alone: a progress of a million pieces writes a hundred lines.
void Dialogue::tellPercent(int id) {
    Followed& progress = *find(id);
    const int percent = wholePercent(progress.track);
    if (std::exchange(progress.told, percent) != percent)
        settle(written([&] { return JsonLine("progress").add("id", id).add("percent", percent); }));
}

void Dialogue::progressEnd(int id) {
    if (recording().progresses.erase(id) != 0)
        settle(written([&] { return JsonLine("progress-end").add("id", id); }));
}

} // namespace kaz::detail
