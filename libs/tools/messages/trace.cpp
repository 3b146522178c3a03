// SPDX-License-Identifier: Apache-2.0
// A trace comes from anywhere, also from between a failed call and the look at its errno,
// from a director, and from static objects before and after main. So it changes nothing
// that its surroundings can see: errno, exceptions, the line that a director draws. What is
// known of the requests is made at the first look and never destroyed.
#include "tools/messages/trace.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/formats/encode.h"
#include "tools/messages/detail/Dialogue.h"
#include "tools/messages/detail/TerminalScreen.h"
#include "tools/messages/detail/TerminalText.h"
#include "tools/messages/detail/TraceRequest.h"
#include "tools/messages/detail/dialogue_text.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"
#include "tools/platform/host_lines.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

constinit bool kaz::detail::mayTrace = true;

namespace {

constexpr std::string_view everyTopic = "all";

constinit int silences = 0;
constinit bool isWriting = false;

/// Writes traces to standard error, beside what a director draws there.
void writeError(const std::string& line) {
    kaz::detail::TerminalScreen::writeAside(
        kaz::host::isTerminal(stderr) ? kaz::detail::shownText(line, true) : line);
}

class Traces {
public:
    static Traces& instance() {
        static Traces& traces = *new Traces;
        return traces;
    }

    bool hold(std::string_view topic) const {
        return std::any_of(topics_.begin(), topics_.end(), [topic](const std::string& asked) {
            return asked == topic || asked == everyTopic;
        });
    }

    void add(std::string_view topic) {
        if (topic.empty())
            return;
        topics_.emplace_back(topic);
        kaz::detail::mayTrace = true;
    }

    void setFile(const char* name) {
        // The first file holds: traces are not spread over several.
        if (!fileName_.empty())
            return;
        fileName_ = std::string("'") + name + "'";
        if (topics_.empty())
            add(everyTopic);
        file_ = kaz::host::LineWriter(name, false);
        if (!file_.isOpen())
            giveFileUp();
    }

    void write(const std::string& line) {
        if (file_.isOpen() && file_.write(line) == 0)
            return;
        if (file_.isOpen())
            giveFileUp();
        writeError(line);
    }

private:
    Traces() {
        const char* const asked = kaz::host::environment("KAZ_TRACE");
        std::string_view rest = kaz::detail::orEmpty(asked);
        kaz::detail::mayTrace = false;
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find(','), rest.size());
            add(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }

    void giveFileUp() {
        const int reason = errno;
        // Given up before it is told, and for good: the next trace goes to standard error.
        file_ = kaz::host::LineWriter();
        print_err("-trace_file: cannot write %s: %s", kazPrintable(fileName_.c_str()).getValue(),
                  kaz::host::errorText(reason).c_str());
    }

    std::vector<std::string> topics_;
    std::string fileName_;       ///< quoted; empty while there is none
    kaz::host::LineWriter file_; ///< no stream: at the end of a tool all streams are closed
};

struct KeptErrno {
    int reason = errno;
    ~KeptErrno() { errno = reason; }
};

struct WhileWriting {
    WhileWriting() { isWriting = true; }
    ~WhileWriting() { isWriting = false; }
};

/// Recorded first, as all that a tool says.
void write(const char* topic, const std::string& text) {
    if (kaz::detail::Dialogue::isOn())
        kaz::detail::Dialogue::trace(topic, text.c_str());
    Traces::instance().write(std::string("trace ") + topic + ": " + text + '\n');
}

} // namespace

/// Safe in destructors and without memory; not in a signal handler, as the first look allocates.
bool kazIsTraced(const char* topic) {
    // What the writing itself would trace is left out, or it would not end.
    if (topic == nullptr || silences > 0 || isWriting)
        return false;
    const KeptErrno kept;
    try {
        return Traces::instance().hold(topic);
    } catch (const KazMemoryException&) {
        return false;
    }
}

void kazTrace(const char* topic, const char* format, ...) {
    if (!kazIsTraced(topic))
        return;
    const KeptErrno kept;
    // Before the text is made: what formats, records and shows it may trace, too.
    const WhileWriting now;
    va_list args;
    va_start(args, format);
    try {
        const std::string text = kaz::detail::dialogue::textOf(format, args);
        write(topic, text.substr(0, text.find('\0')));
    } catch (const KazMemoryException&) { // left out
    }
    va_end(args);
}

namespace kaz::detail {

void requestTraces(const char* const* topics, std::size_t count, const char* file) {
    Traces& traces = Traces::instance();
    for (std::size_t i = 0; i < count; ++i)
        if (!traces.hold(topics[i]))
            traces.add(topics[i]);
    if (file != nullptr)
        traces.setFile(file);
}

TraceSilence::TraceSilence() {
    ++silences;
}

TraceSilence::~TraceSilence() {
    --silences;
}

} // namespace kaz::detail
