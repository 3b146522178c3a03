// SPDX-License-Identifier: Apache-2.0
// The director's own operations: the console.

#include "tools/messages/KazConsoleProgress.h"
#include "tools/messages/KazIODirector.h"
#include "tools/platform/host.h"
#include "tools/util/detail/or_empty.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>

namespace {

constexpr int fatalStatus = 1;
constexpr std::size_t lineSize = 256; // the terminator included

/// The answers of each dialog type, with the default in brackets; the columns
/// are the default replies Accept, Decline and any other.
constexpr const char* choiceLists[][3] = {
    {"[Ok]", "[Ok]", "[Ok]"},
    {"[Ok]/Cancel", "Ok/[Cancel]", "Ok/[Cancel]"},
    {"[Retry]/Cancel", "Retry/[Cancel]", "Retry/[Cancel]"},
    {"[Yes]/No", "Yes/[No]", "Yes/[No]"},
    {"[Yes]/No/Cancel", "Yes/[No]/Cancel", "Yes/No/[Cancel]"},
    {"Abort/[Retry]/Ignore", "[Abort]/Retry/Ignore", "Abort/Retry/[Ignore]"},
};
static_assert(std::size(choiceLists) == KazIODirector::AbortRetryIgnore + 1);

struct AnswerRow {
    char letters[3];
    KazIODirector::Reply reply;
};

/// What the first letter of an answer means, whatever the dialog offers. "c" is
/// Decline also where Cancel as the default stands for Ignore: scripts that
/// answer for the user rely on it.
constexpr AnswerRow answers[] = {
    {"oO", KazIODirector::Accept},  {"cC", KazIODirector::Decline}, {"yY", KazIODirector::Accept},
    {"nN", KazIODirector::Decline}, {"rR", KazIODirector::Accept},  {"aA", KazIODirector::Decline},
    {"iI", KazIODirector::Ignore},
};

const char* choiceList(KazIODirector::DialogType type, KazIODirector::Reply defaultReply) {
    if (type < 0 || type >= static_cast<int>(std::size(choiceLists)))
        return "";
    const bool listed =
        defaultReply == KazIODirector::Accept || defaultReply == KazIODirector::Decline;
    return choiceLists[type][listed ? defaultReply : KazIODirector::Ignore];
}

KazIODirector::Reply replyTo(char letter, KazIODirector::Reply defaultReply) {
    for (const AnswerRow& row : answers)
        if (letter == row.letters[0] || letter == row.letters[1])
            return row.reply;
    return defaultReply;
}

/// Reads a line of standard input without its end, "\n" or "\r\n". What does not
/// fit is read and dropped, so that it does not answer the next question.
/// False at the end of input.
bool readLine(char (&line)[lineSize]) {
    std::size_t length = 0;
    std::size_t kept = 0;
    int last = EOF;
    int c;
    while ((c = std::getchar()) != EOF && c != '\n') {
        if (kept < lineSize - 1)
            line[kept++] = static_cast<char>(c);
        last = c;
        ++length;
    }
    if (c == EOF && length == 0)
        return false;
    if (c == '\n' && last == '\r' && kept == length)
        --kept;
    line[kept] = '\0';
    return true;
}

/// The terminal shows nothing of what is typed during the lifetime.
class HiddenInput {
public:
    HiddenInput() { kaz::host::echoOff(); }
    ~HiddenInput() { kaz::host::echoOn(); }
    HiddenInput(const HiddenInput&) = delete;
    HiddenInput& operator=(const HiddenInput&) = delete;
};

/// The same without ever showing what is typed. The cursor goes on to a new
/// line, since the terminal has not shown the user's own.
bool readHiddenLine(char (&line)[lineSize]) {
    bool read;
    {
        const HiddenInput hidden;
        // Only now does the question appear: who answers at once is not seen.
        std::fflush(stdout);
        read = readLine(line);
    }
    std::puts("");
    return read;
}

bool readShownLine(char (&line)[lineSize]) {
    std::fflush(stdout);
    return readLine(line);
}

/// The newline depends on the format, not on the text that results: callers
/// choose it where they write the format.
KAZ_PRINTF(2, 0)
void writeLine(std::FILE* stream, const char* format, va_list args) {
    if (format == nullptr)
        format = "";
    std::vfprintf(stream, format, args);
    const std::size_t length = std::strlen(format);
    if (length == 0 || format[length - 1] != '\n')
        std::putc('\n', stream);
}

void* asKey(int progressId) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(progressId));
}

} // namespace

int KazIODirector::doTtyStart(const char* command) {
    std::printf("Executing: %s\n", kaz::detail::orEmpty(command));
    // What the command itself writes comes after this.
    std::fflush(stdout);
    return 0;
}

void KazIODirector::doTtyEnd(int) {
    std::printf("Execution Complete.\n");
}

void KazIODirector::doTtyMsg(int, const char* format, va_list args) {
    doPrintMsg(format, args);
}

void KazIODirector::doPrintMsg(const char* format, va_list args) {
    writeLine(stdout, format, args);
    std::fflush(stdout);
}

void KazIODirector::doPrintError(const char* format, va_list args) {
    writeLine(stderr, format, args);
    std::fflush(stderr);
}

void KazIODirector::doFatalError(const char* format, va_list args) {
    writeLine(stderr, format, args);
    std::exit(fatalStatus);
}

void KazIODirector::doPrintSymMsg(_gu_set_struct_*, const char* format, va_list args) {
    doPrintMsg(format, args);
}

void KazIODirector::doPrintSymError(_gu_set_struct_*, const char* format, va_list args) {
    doPrintError(format, args);
}

KazIODirector::Reply KazIODirector::doConfirm(const KazString& title, const KazString& message,
                                              DialogType type, Reply defaultReply) {
    std::printf("%s: %s %s ", title.getValue(), message.getValue(), choiceList(type, defaultReply));
    char line[lineSize];
    if (!readShownLine(line) || line[0] == '\0')
        return defaultReply;
    return replyTo(line[0], defaultReply);
}

bool KazIODirector::doGetUserInput(KazString& result, const KazString& title,
                                   const KazString& prompt, bool echo) {
    std::printf("%s: %s: ", title.getValue(), prompt.getValue());
    char line[lineSize];
    const bool read = echo ? readShownLine(line) : readHiddenLine(line);
    if (!read || line[0] == '\0')
        return false;
    result = line;
    return true;
}

// The parameter is by value in the interface that directors override.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
int KazIODirector::doProgressStart(KazString title, int) {
    auto progress = std::make_unique<KazConsoleProgress>();
    std::printf("%s ", title.getValue());
    std::fflush(stdout);
    // From 1 on: 0 stands for no progress.
    const int progressId = ++progressIdCounter_;
    // Memory can run out while the entry is made, so the object enters last.
    progressMap_.bind(asKey(progressId), nullptr, true);
    progressMap_.rebind(asKey(progressId), static_cast<KazProgress*>(progress.release()));
    return progressId;
}

void KazIODirector::doProgressIncrement(int progressId, double amount, bool flag) {
    if (auto* progress = static_cast<KazProgress*>(progressMap_.valueOf(asKey(progressId))))
        progress->increment(amount, flag);
}

void KazIODirector::doProgressMsg(int, int, const char* format, va_list args) {
    std::putchar('\n');
    if (format != nullptr)
        std::vprintf(format, args);
    std::fflush(stdout);
}

void KazIODirector::doProgressEnd(int progressId) {
    progressMap_.unbind(asKey(progressId));
}

bool KazIODirector::isCancelPending(int) {
    return false;
}

int KazIODirector::isFinal() {
    return 0;
}

void KazIODirector::doAddCallback(int, int) {}
void KazIODirector::doRemoveCallback(int, int) {}
void KazIODirector::doNotify(int) {}
void KazIODirector::doStartSubProgress(int, double, int) {}
void KazIODirector::doEndSubProgress(int) {}
void KazIODirector::doReset(int) {}
