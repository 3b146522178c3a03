// SPDX-License-Identifier: Apache-2.0
#include "messages.h"

#include "common/complaint.h"
#include "common/output.h"
#include "common/printable.h"
#include "message_file.h"
#include "source_text.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace {

/// No source text is of that size; what never ends would fill the memory.
constexpr std::size_t sizeLimit = std::size_t{256} << 20;

/// Reads to the end. False with errno set when that cannot be done.
bool readAll(std::FILE* stream, std::string& bytes) {
    char part[65536];
    for (;;) {
        std::clearerr(stream);
        const std::size_t got = std::fread(part, 1, sizeof part, stream);
        bytes.append(part, got);
        if (got < sizeof part && !(std::ferror(stream) && errno == EINTR))
            return !std::ferror(stream);
        if (bytes.size() > sizeLimit) {
            errno = EFBIG;
            return false;
        }
    }
}

/// Reads a whole file. False, and a problem, when that cannot be done.
bool readFile(Messages& messages, std::string& bytes) {
    const bool isStandard = isStandardStream(messages.file);
    if (isStandard) {
        messages.file = "standard input";
        TI_passBytes(stdin);
    }
    errno = 0;
    std::FILE* stream = isStandard ? stdin : TI_fopen(messages.file.c_str(), "rb");
    const bool whole = stream && readAll(stream, bytes);
    const int reason = errno;
    if (stream && !isStandard)
        std::fclose(stream);
    if (!whole)
        messages.addProblem(0, "cannot be read: " + std::generic_category().message(reason));
    return whole;
}

/// A message file and a source text are easily taken for one another; the other kind's
/// faults would fill the screen.
bool isSourceText(const Messages& messages, const std::string& bytes) {
    if (bytes.find('\0') != bytes.npos)
        return false;
    Messages texts{messages.file, {}, {}};
    parseSource(bytes, texts);
    return !texts.texts.empty();
}

} // namespace

std::string Messages::place(int line) const {
    return line > 0 ? file + ":" + std::to_string(line) : file;
}

bool Messages::report() {
    std::stable_sort(problems.begin(), problems.end(),
                     [](const Problem& a, const Problem& b) { return a.line < b.line; });
    for (const Problem& problem : problems)
        print_err("%s", printable(place(problem.line) + ": " + problem.text).c_str());
    const auto first = std::find_if(problems.begin(), problems.end(),
                                    [](const Problem& problem) { return problem.line > 0; });
    if (first != problems.end())
        openComplaint("moxmsg", file, first->line);
    return problems.empty();
}

Messages readMessages(const std::string& file) {
    Messages messages{file, {}, {}};
    std::string bytes;
    if (readFile(messages, bytes))
        isMessageFile(bytes) ? decodeMessageFile(bytes, messages) : parseSource(bytes, messages);
    return messages;
}

Messages readMessageFile(const std::string& file) {
    Messages messages{file, {}, {}};
    std::string bytes;
    if (!readFile(messages, bytes))
        return messages;
    if (!isMessageFile(bytes) && isSourceText(messages, bytes))
        messages.addProblem(0, "is a source text and no message file: -source reads it");
    else
        decodeMessageFile(bytes, messages);
    return messages;
}

Messages readSourceText(const std::string& file) {
    Messages messages{file, {}, {}};
    std::string bytes;
    if (!readFile(messages, bytes))
        return messages;
    if (isMessageFile(bytes))
        messages.addProblem(0, "is a message file and no source text: -file reads it");
    else
        parseSource(bytes, messages);
    return messages;
}
