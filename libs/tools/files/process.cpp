// SPDX-License-Identifier: Apache-2.0
// Commands cross the border to the shell as one line, and results come back through sinks that
// get the bytes as they arrive. A line of output ends with a newline or with the output; NULs in
// it become blanks, since a message is a terminated text.
#include "tools/files/process.h"

#include "tools/files/detail/text.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"
#include "tools/util/detail/allocate.h"
#include "tools/util/detail/heap_ptr.h"
#include "tools/util/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace host = kaz::host;
using kaz::detail::orEmpty;
using kaz::detail::toText;

namespace {

using HeapText = kaz::detail::HeapPtr<char>;
using Words = std::vector<HeapText>;

/// False for a quote that is not closed.
bool readWords(const char* text, Words& words) {
    for (;;) {
        char* word = nullptr;
        const word_status_enum found = next_word(&text, &word);
        HeapText owned(word);
        if (found != word_found)
            return found == word_none;
        words.push_back(std::move(owned));
    }
}

/// The vector, its terminating null and the words behind it in one block.
/// One block, so that callers release everything with one call.
char** oneBlock(const Words& words) {
    std::size_t size = (words.size() + 1) * sizeof(char*);
    for (const HeapText& word : words)
        size += std::strlen(word.get()) + 1;
    auto* const argv = static_cast<char**>(kaz::detail::allocate(size));
    char* out = reinterpret_cast<char*>(argv + words.size() + 1);
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::size_t bytes = std::strlen(words[i].get()) + 1;
        argv[i] = static_cast<char*>(std::memcpy(out, words[i].get(), bytes));
        out += bytes;
    }
    argv[words.size()] = nullptr;
    return argv;
}

class Collector final : public host::OutputSink {
public:
    void write(const char* data, std::size_t size) override { text_.append(data, size); }
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

/// Shows output line by line; what is left at the end is a line too.
class Presenter final : public host::OutputSink {
public:
    explicit Presenter(int ttyId) : ttyId_(ttyId) {}

    void write(const char* data, std::size_t size) override {
        for (std::size_t i = 0; i < size; ++i) {
            if (data[i] == '\n')
                show();
            else
                line_ += data[i] != '\0' ? data[i] : ' ';
        }
    }

    void finish() {
        if (!line_.empty())
            show();
    }

private:
    void show() {
        const std::string line = std::move(line_);
        line_.clear();
        tty_msg(ttyId_, "%s", line.c_str());
    }

    int ttyId_;
    std::string line_;
};

/// Would a shell take the plain @p word for something else where a line begins: an
/// assignment, or a word of its language?
bool hasMeaningInFront(std::string_view word) {
    static constexpr std::string_view keywords[] = {
        "case",     "coproc", "do", "done",   "elif", "else", "esac",  "fi",   "for",
        "function", "if",     "in", "select", "then", "time", "until", "while"};
    return word.find('=') != word.npos ||
           std::find(std::begin(keywords), std::end(keywords), word) != std::end(keywords);
}

int statusOf(const host::Completion& ended, int* signal) {
    if (signal != nullptr)
        *signal = ended.signal;
    return ended.status;
}

} // namespace

int TI_putenv(const char* name, const char* value) {
    return name != nullptr ? host::setEnvironment(name, orEmpty(value)) : -1;
}

int str_to_argv(const char* text, char*** argv) {
    *argv = nullptr;
    Words words;
    if (!readWords(text, words))
        return -1;
    *argv = oneBlock(words);
    return static_cast<int>(words.size());
}

KazString argv_to_str(int argc, const char* const* argv) {
    std::string line;
    for (int i = 0; argv != nullptr && i < argc && argv[i] != nullptr; ++i) {
        if (i > 0)
            line += ' ';
        // The first word alone can be mistaken for something of the shell's language.
        const HeapText word(quote_word(argv[i]));
        const bool onlyPlain = i == 0 && !word_needs_quotes(argv[i]);
        if (onlyPlain && hasMeaningInFront(argv[i]))
            line.append(1, '"').append(argv[i]).append(1, '"');
        else
            line += word.get();
    }
    return toText(line);
}

int shell_cmd(const char* command, int* signal) {
    host::flushStreams(); // or what was written before would stand below the command's name
    const int id = tty_start(orEmpty(command));
    Presenter output(id);
    const host::Completion ended = host::runShell(orEmpty(command), &output);
    output.finish();
    tty_end(id);
    if (ended.error != 0)
        print_err("%s: %s", orEmpty(command), host::errorText(ended.error).c_str());
    return statusOf(ended, signal);
}

int shell_cmd_output(const char* command, KazString& output, int* signal) {
    Collector collected;
    const host::Completion ended = host::runShell(orEmpty(command), &collected);
    // The caller's text stays as it was when nothing was started.
    if (ended.error == 0)
        output = toText(collected.text());
    errno = ended.error;
    return statusOf(ended, signal);
}
