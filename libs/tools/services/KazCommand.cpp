// SPDX-License-Identifier: Apache-2.0
// A command is a description that can be run any number of times. A line for the host's
// interpreter is passed on as it stands, and words behind it are quoted by the interpreter's
// rules; a program gets its words as they are.
//
// What a caller asked for becomes one Launch of the platform's start function, and how
// that ended becomes the results. The results are of the last run alone: they are
// cleared before it and set when it has ended.
#include "tools/services/KazCommand.h"

#include "tools/files/detail/text.h"
#include "tools/files/process.h"
#include "tools/formats/encode.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace host = kaz::host;
using kaz::detail::orEmpty;
using kaz::detail::toText;

namespace {

/// Keeps so much of an output, and drops the rest.
/// The rest is read all the same: a program whose pipe is full would wait for ever.
class Kept final : public host::OutputSink {
public:
    explicit Kept(std::size_t limit) : limit_(limit) {}
    void write(const char* data, std::size_t size) override {
        text_.append(data, std::min(size, limit_ - text_.size()));
    }
    const std::string& text() const { return text_; }

private:
    std::size_t limit_;
    std::string text_;
};

/// At most @p most bytes of a text, of whole characters. True when it was cut.
bool cutBytes(std::string& text, std::size_t most) {
    if (text.size() <= most)
        return false;
    std::size_t end = most;
    // Bytes 10xxxxxx go on with a character, so the cut moves to the one that begins it.
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    text.resize(end);
    return true;
}

std::string printable(const std::string& text) {
    return kazPrintable(text.c_str()).getValue();
}

std::string nameOf(const std::string& command) {
    constexpr std::size_t most = 60;
    std::string name = printable(command);
    if (cutBytes(name, most))
        name += "...";
    return '"' + name + '"';
}

/// The last line that holds more than blanks, and printable; "" when there is none.
std::string lastLine(std::string_view text) {
    constexpr std::size_t most = 200;
    const std::size_t end = text.find_last_not_of(" \t\r\n\v\f");
    if (end == std::string_view::npos)
        return {};
    text = text.substr(0, end + 1);
    // npos + 1 is the beginning.
    text.remove_prefix(text.find_last_of("\r\n") + 1);
    std::string line(text);
    // Twice: before, so that a line of megabytes is not escaped whole, and after the escapes.
    cutBytes(line, most);
    line = printable(line); // which may be longer, never shorter
    cutBytes(line, most);
    return line;
}

std::string hexadecimal(std::uint32_t code) {
    char text[11];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
    return text;
}

/// A "=" would end the name early, and set another variable.
bool isVariableName(const char* name) {
    return name != nullptr && *name != '\0' && std::strchr(name, '=') == nullptr;
}

/// The line with further words behind it; empty when one of them cannot be there.
std::string lineOf(const std::vector<std::string>& words) {
    std::string line = words[0];
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string word = host::interpreterWord(words[i]);
        if (word.empty())
            return {};
        line += ' ' + word;
    }
    return line;
}

} // namespace

/// One run: what to start, and who gets its output.
struct KazCommand::Run {
    host::Launch launch;
    host::Completion ended;
};

KazCommand::KazCommand(const char* program) : words_{orEmpty(program)} {}

KazCommand KazCommand::shell(const char* line) {
    KazCommand command(line);
    command.isLine_ = true;
    return command;
}

KazCommand& KazCommand::add(const char* argument) {
    words_.emplace_back(orEmpty(argument));
    return *this;
}

KazCommand& KazCommand::setDirectory(const char* path) {
    directory_ = orEmpty(path);
    return *this;
}

/// The last call for a name counts, so it leaves the list that it was in.
KazCommand& KazCommand::setVariable(const char* name, const char* value) {
    if (!isVariableName(name))
        return *this;
    std::erase(removed_, name);
    std::erase_if(variables_, [&](const auto& variable) { return variable.first == name; });
    if (value != nullptr)
        variables_.emplace_back(name, value);
    else
        removed_.emplace_back(name);
    return *this;
}

KazCommand& KazCommand::setInput(const KazString& text) {
    input_ = text;
    return *this;
}

KazCommand& KazCommand::setTimeout(int milliseconds) {
    timeout_ = std::max(milliseconds, 0);
    return *this;
}

KazCommand& KazCommand::setOutputLimit(int bytes) {
    outputLimit_ = std::max(bytes, 0);
    return *this;
}

bool KazCommand::execute(Run& run) {
    output_ = errors_ = KazString();
    status_ = -1;
    signal_ = error_ = 0;
    timedOut_ = wasRun_ = byException_ = false;
    run.launch.words = isLine_ && words_.size() > 1 ? std::vector{lineOf(words_)} : words_;
    run.launch.isLine = isLine_;
    run.launch.directory = directory_;
    run.launch.variables = variables_;
    run.launch.removed = removed_;
    // An empty line stands for a word that the interpreter cannot be given.
    if (words_.size() > 1 && run.launch.words[0].empty() && isLine_)
        run.ended.error = EINVAL;
    else
        host::start(run.launch, run.ended);
    // A program that was stopped for its time ends with a status of the stopping, not its own.
    byException_ = run.ended.exception != 0 && !run.ended.isStopped;
    error_ = run.ended.error;
    timedOut_ = run.ended.isStopped;
    signal_ = byException_ ? 0 : run.ended.signal;
    status_ = byException_ ? static_cast<int>(run.ended.exception) : run.ended.status;
    if (error_ != 0 || timedOut_)
        status_ = -1;
    wasRun_ = true;
    return status_ == 0;
}

bool KazCommand::run() {
    Kept out(static_cast<std::size_t>(outputLimit_));
    Kept err(static_cast<std::size_t>(outputLimit_));
    Run run;
    if (!input_.isEmpty()) {
        run.launch.inputKind = host::Launch::text;
        run.launch.input = {input_.getValue(), static_cast<std::size_t>(input_.getLength())};
    }
    run.launch.output = &out;
    run.launch.errors = &err;
    run.launch.timeout = timeout_;
    const bool succeeded = execute(run);
    output_ = toText(out.text());
    errors_ = toText(err.text());
    return succeeded;
}

bool KazCommand::start() {
    Run run;
    run.launch.isDetached = true;
    return execute(run);
}

bool KazCommand::runInTerminal() {
    Run run;
    run.launch.inputKind = host::Launch::shared;
    run.launch.ownsTerminal = true;
    return execute(run);
}

KazString KazCommand::getErrorText() const {
    if (!wasRun_ || (status_ == 0 && error_ == 0 && !timedOut_))
        return KazString();
    const std::string name = nameOf(words_[0]);
    std::string text;
    if (error_ != 0)
        // From the certain to the general: a program that was stopped may have a signal as well,
        // and the interpreter's two statuses are ordinary ones for a program.
        text = " could not be started: " + host::errorText(error_);
    else if (timedOut_)
        text = " was stopped after " + std::to_string(timeout_) + " milliseconds";
    else if (signal_ != 0)
        text = " was ended by signal " + std::to_string(signal_) + " (" +
               host::signalName(signal_) + ")";
    else if (isLine_ && status_ == host::interpreterFindsNothing)
        text = ": command not found";
    else if (isLine_ && status_ == host::interpreterMayNotRun)
        text = ": not executable";
    else if (byException_)
        text = " was ended by exception " + hexadecimal(static_cast<std::uint32_t>(status_));
    else if (status_ < 0)
        text = " ended with an unknown status";
    else
        text = " ended with status " + std::to_string(status_);
    if (status_ > 0 && text.starts_with(" ended")) {
        const std::string line =
            lastLine({errors_.getValue(), static_cast<std::size_t>(errors_.getLength())});
        if (!line.empty())
            text += ": " + line;
    }
    return toText(name + text);
}

KazString KazCommand::getText() const {
    std::vector<const char*> rest;
    for (const std::string& word : words_)
        rest.push_back(word.c_str());
    const std::size_t bare = isLine_ ? 1 : 0; // words that are not quoted
    const KazString quoted = argv_to_str(static_cast<int>(rest.size() - bare), rest.data() + bare);
    std::string text = isLine_ ? words_[0] : std::string();
    if (isLine_ && rest.size() > 1)
        text += ' ';
    return kazPrintable((text + quoted.getValue()).c_str());
}
