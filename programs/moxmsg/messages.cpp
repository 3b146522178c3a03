// SPDX-License-Identifier: Apache-2.0
// Files are read as a whole, and what kind of file one is follows from its contents. A file of
// another kind than the one that was asked for is named as what it is, with the option that reads
// it, instead of by the faults that it would have as the wrong kind.
#include "messages.h"

#include "common/complaint.h"
#include "common/output.h"
#include "common/printable.h"
#include "message_file.h"
#include "source_text.h"
#include "tools/moxtools.h"
#include "translations.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace {

/// No source text is of that size; what never ends would fill the memory.
constexpr std::size_t sizeLimit = std::size_t{256} << 20;

/// What was meant to be another file would fill the screen.
constexpr std::size_t mostShown = 100;

/// Reads to the end. False with errno set when that cannot be done.
bool readAll(std::FILE* stream, std::string& bytes) {
    char part[65536];
    for (;;) {
        // Or an interruption that was met before would count as a failure of this part.
        std::clearerr(stream);
        const std::size_t got = std::fread(part, 1, sizeof part, stream);
        bytes.append(part, got);
        // Part of a block is the end, unless a signal has cut it.
        if (got < sizeof part && (std::ferror(stream) == 0 || errno != EINTR))
            return std::ferror(stream) == 0;
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
    const bool whole = stream != nullptr && readAll(stream, bytes);
    // Closing may change it.
    const int reason = errno;
    if (stream != nullptr && !isStandard)
        std::fclose(stream);
    if (!whole)
        messages.addProblem(0, "cannot be read: " + std::generic_category().message(reason));
    return whole;
}

using Decode = void(const std::string& bytes, Messages& messages);

Messages readWith(Decode* decode, const std::string& file) {
    Messages messages{file, {}, {}};
    std::string bytes;
    if (readFile(messages, bytes))
        decode(bytes, messages);
    return messages;
}

// The kinds of files are easily taken for one another; another kind's faults would fill the
// screen.

bool isTemplate(const std::string& bytes) {
    return bytes.starts_with("msgid \"") || bytes.find("\nmsgid \"") != bytes.npos;
}

void decodeSource(const std::string& bytes, Messages& messages) {
    if (isTranslation(bytes))
        return messages.addProblem(0, "is an MO file: -merge takes its texts for those of -source");
    // A template is looked for only where something is wrong: a text may hold such a line.
    parseSource(bytes, messages);
    if (!messages.problems.empty() && isTemplate(bytes))
        messages.problems = {{0, "is a PO file: msgfmt --check makes the MO file of it"}};
}

bool isSourceText(const std::string& bytes) {
    if (bytes.find('\0') != bytes.npos)
        return false;
    Messages messages;
    parseSource(bytes, messages);
    return !messages.texts.empty();
}

void decodeEither(const std::string& bytes, Messages& messages) {
    isMessageFile(bytes) ? decodeMessageFile(bytes, messages) : decodeSource(bytes, messages);
}

} // namespace

bool Messages::report() {
    // Some are found after the reading; users mend a file from the top.
    std::stable_sort(problems.begin(), problems.end(),
                     [](const Problem& a, const Problem& b) { return a.line < b.line; });
    const std::size_t shown = std::min(problems.size(), mostShown);
    for (std::size_t i = 0; i < shown; ++i)
        print_err("%s", printable(place(problems[i].line) + ": " + problems[i].text).c_str());
    if (problems.size() > shown)
        print_err("%s: %zu further problems", printable(file).c_str(), problems.size() - shown);
    const auto first = std::find_if(problems.begin(), problems.end(),
                                    [](const Problem& problem) { return problem.line > 0; });
    if (first != problems.end())
        openComplaint("moxmsg", file, first->line);
    return problems.empty();
}

Messages readMessages(const std::string& file) {
    return readWith(decodeEither, file);
}

Messages readOther(const std::string& file) {
    return readWith(
        [](const std::string& bytes, Messages& messages) {
            if (bytes.empty()) // what a failed msgfmt leaves must not pass for translations
                messages.addProblem(0, "is empty");
            else
                isTranslation(bytes) ? decodeTranslation(bytes, messages)
                                     : decodeEither(bytes, messages);
        },
        file);
}

Messages readMessageFile(const std::string& file) {
    return readWith(
        [](const std::string& bytes, Messages& messages) {
            if (isTranslation(bytes))
                decodeSource(bytes, messages);
            else if (!isMessageFile(bytes) && isSourceText(bytes))
                messages.addProblem(0, "is a source text and no message file: -source reads it");
            else
                decodeMessageFile(bytes, messages);
        },
        file);
}

Messages readSourceText(const std::string& file) {
    return readWith(
        [](const std::string& bytes, Messages& messages) {
            if (isMessageFile(bytes))
                messages.addProblem(0, "is a message file and no source text: -file reads it");
            else
                decodeSource(bytes, messages);
        },
        file);
}
