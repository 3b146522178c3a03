// SPDX-License-Identifier: Apache-2.0
/// Makes, shows, compares and checks message files.

#include "common/formats.h"
#include "common/output.h"
#include "common/printable.h"
#include "common/trace_options.h"
#include "message_file.h"
#include "messages.h"
#include "source_text.h"
#include "tools/moxtools.h"
#include "translations.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <set>

namespace {

enum Status { Done = 0, Failed = 1 };

constexpr KazCommandLine::Option options[] = {
    {arg_source, "TEXT", "source text to compile or to check", false, KazCommandLine::AnyFile},
    {arg_file, "MSG_FILE", "message file to write back as text, or to compare", false,
     KazCommandLine::AnyFile},
    {arg_merge, nullptr, "compare with the other file, or take the texts of an MO file"},
    {arg_formats, "FORMAT", "write the source text in this format, for translators", false,
     KazCommandLine::OneOf, "po"},
    {arg_output, "FILE", "file to write instead of standard output", false,
     KazCommandLine::AnyFile},
    traceTopics,
    traceFile};
constexpr KazCommandLine commandLine(
    {"moxmsg", MOX_VERSION,
     "Compiles a source text into a message file, or checks it when no output is\n"
     "named. Writes a message file back as source text. With -merge compares with\n"
     "the other file, of either kind, or takes the translations of an MO file, for\n"
     "which -formats po makes the template. \"-\" is standard input or standard output.",
     options, std::size(options), "[other]", 0, 1, KazCommandLine::AnyFile});

std::string textOf(arg_type_enum type) {
    const char* text = kaz_arg_text(type, 0, nullptr);
    return text != nullptr ? text : "";
}

struct Request {
    std::string source;
    std::string file;
    std::string output;
    std::string other;  ///< what to compare with, or ""
    std::string format; ///< of what is written for translators, or ""

    /// What is wrong with the request; "" when nothing is.
    std::string problem() const {
        if (source.empty() && file.empty())
            return "either -source or -file is needed";
        if (!source.empty() && !file.empty())
            return "-source and -file exclude one another";
        if (TI_no(textOf(arg_merge).c_str()) == other.empty())
            return other.empty() ? "-merge needs another file"
                                 : "what is " + printable(other) + " for?";
        if (!format.empty() && source.empty())
            return "-formats needs -source";
        if (!format.empty() && !other.empty())
            return "-formats and -merge exclude one another";
        const std::array inputs = {source, file, other};
        if (std::count_if(inputs.begin(), inputs.end(), isStandardStream) > 1)
            return "standard input can be read once only";
        for (const std::string& input : inputs) {
            if (!output.empty() && !isStandardStream(output) && !input.empty() &&
                isSameFile(input, output))
                return "-output would overwrite " + printable(input);
        }
        return "";
    }
};

/// Texts with one number that do not take the same arguments are a problem of
/// the first file.
void compareFormats(Messages& messages, const Messages& other) {
    for (const auto& [number, message] : messages.texts) {
        const auto found = other.texts.find(number);
        if (found == other.texts.end())
            continue;
        const std::string here = printfArguments(message.text);
        const std::string there = printfArguments(found->second.text);
        if (here == there)
            continue;
        KazString problem;
        problem.format("the arguments of %d (%s) are others in %s (%s)", number, here.c_str(),
                       other.place(found->second.line).c_str(), there.c_str());
        messages.addProblem(message.line, problem.getValue());
    }
}

std::string listing(const Messages& messages) {
    std::string text;
    for (const auto& [number, message] : messages.texts)
        text += sourceLine(number, message.text) + "\n";
    return text;
}

std::string differences(const Messages& messages, const Messages& other) {
    std::string text;
    auto here = messages.texts.begin();
    auto there = other.texts.begin();
    while (here != messages.texts.end() || there != other.texts.end()) {
        const bool isHere = there == other.texts.end() ||
                            (here != messages.texts.end() && here->first <= there->first);
        const bool isThere = here == messages.texts.end() ||
                             (there != other.texts.end() && there->first <= here->first);
        if (!isHere || !isThere || here->second.text != there->second.text) {
            text += isHere ? "< " + sourceLine(here->first, here->second.text) + "\n" : "";
            text += isThere ? "> " + sourceLine(there->first, there->second.text) + "\n" : "";
        }
        here = isHere ? std::next(here) : here;
        there = isThere ? std::next(there) : there;
    }
    return text;
}

/// Does nothing where @p other has none.
void mergeTranslations(Messages& messages, Messages& other) {
    std::set<int> outdated;
    takeTranslations(messages, other, outdated);
    for (const int number : outdated) {
        const char* reason = messages.texts.contains(number) ? "is of another text and is not used"
                                                             : "is of no text and is not used";
        print_err("%s: the translation of %d %s", printable(other.file).c_str(), number, reason);
    }
}

Status writeTemplate(const Request& request) {
    Messages messages = readSourceText(request.source);
    const std::string text = translationTemplate(messages);
    return messages.report() && writeOutput(request.output, text) ? Done : Failed;
}

Status compile(const Request& request) {
    Messages messages = readSourceText(request.source);
    bool isSound = true;
    if (!request.other.empty()) {
        Messages other = readOther(request.other);
        mergeTranslations(messages, other);
        compareFormats(messages, other);
        isSound = other.report();
    }
    // Before the report, since what does not fit is found here.
    const std::string bytes = encodeMessageFile(messages);
    if (!messages.report() || !isSound)
        return Failed;
    return request.output.empty() || writeBytes(request.output, bytes) ? Done : Failed;
}

/// Shows what there is of a damaged file. A file gets all or nothing: the one that is there
/// may be the last that has the texts.
bool writeListing(const Request& request, const std::string& text, bool isWhole) {
    const bool isFile = !request.output.empty() && !isStandardStream(request.output);
    return (isWhole || !isFile) && writeOutput(request.output, text) && isWhole;
}

Status show(const Request& request) {
    Messages messages = readMessageFile(request.file);
    const bool isSound = messages.report();
    return writeListing(request, listing(messages), isSound) ? Done : Failed;
}

Status compare(const Request& request) {
    Messages messages = readMessageFile(request.file);
    Messages other = readMessages(request.other);
    const bool otherIsSound = other.report();
    // Adds problems to the first file, so it is reported after the other one.
    compareFormats(messages, other);
    const bool isSound = messages.report() && otherIsSound;
    const std::string found = differences(messages, other);
    return writeListing(request, found, isSound) && found.empty() ? Done : Failed;
}

class MoxMsg : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
            return status;
        const char* other = kaz_arg_get_untagged(0);
        const Request request{textOf(arg_source), textOf(arg_file), textOf(arg_output),
                              other != nullptr ? other : "", textOf(arg_formats)};
        const std::string problem = request.problem();
        if (!problem.empty()) {
            commandLine.complain("%s", problem.c_str());
            return KazCommandLine::wrongUsage;
        }
        if (!request.format.empty())
            return writeTemplate(request);
        if (!request.source.empty())
            return compile(request);
        return request.other.empty() ? show(request) : compare(request);
    }
};

MoxMsg theTool;

} // namespace
