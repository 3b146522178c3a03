// SPDX-License-Identifier: Apache-2.0
#include "tools/app/KazCommandLine.h"

#include "tools/app/KazApp.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/arguments.h"
#include "tools/app/detail/LineCompletion.h"
#include "tools/app/detail/LineReading.h"
#include "tools/app/detail/LineText.h"
#include "tools/messages/messages.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

using kaz::detail::LineReading;
using Description = KazCommandLine::Description;

constexpr int done = 0;
constexpr int notWritten = 1;

/// The tool's own words on the line of this process.
std::vector<std::string>& givenWords() {
    static auto& words = *new std::vector<std::string>; // asked by static objects, too
    return words;
}

// The problem comes first: a shell that cuts after a line still shows what is wrong.
void reportProblem(const Description& description, const std::string& problem,
                   const std::vector<std::string>& notes) {
    const char* const program = description.program;
    print_err("%s: %s", program, problem.c_str());
    for (const std::string& note : notes)
        print_err("%s: note: %s", program, note.c_str());
    print_err("%s -help shows how it is used", program);
}

/// One word of a line of output: a control character would make it another line.
std::string oneWord(const char* text) {
    std::string word = kaz::detail::orEmpty(text);
    std::replace_if(
        word.begin(), word.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    return word;
}

int explain(const Description& description, int argc, char** argv) {
    // The status tells scripts whether the line was good; the lines are written in both cases.
    const LineReading reading(description, argc, argv);
    for (int i = 1; i < argc; ++i)
        print_msg("%d\t%s\t%s", i, oneWord(argv[i]).c_str(), reading.meaningOf(i).c_str());
    const std::string problem = reading.problem();
    print_msg("result\t%s", problem.empty() ? "ok" : problem.c_str());
    return problem.empty() ? done : KazCommandLine::wrongUsage;
}

int complete(const Description& description, KazCommandLine::Completer completer, int argc,
             char** argv) {
    // The shell's script is no user: it gets a status and no message in between its candidates.
    const std::string_view number = argc > 0 && argv[0] != nullptr ? argv[0] : "";
    std::size_t at = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), at);
    if (number.empty() || error != std::errc() || end != number.data() + number.size())
        return KazCommandLine::wrongUsage;
    // argc is positive here, as an empty number has been refused.
    const std::vector<std::string> words(argv + 1, argv + argc);
    for (const std::string& line : kaz::detail::completionsOf(description, completer, at, words))
        print_msg("%s", line.c_str());
    return done;
}

/// What the word at @p position of the line asks for.
int obey(const Description& description, KazCommandLine::Completer completer, int position,
         int argc, char** argv) {
    const std::string_view word = argv[position];
    if (word == "--explain") // the word stands where the program would
        return explain(description, argc - position, argv + position);
    if (word == "--complete")
        return complete(description, completer, argc - position - 1, argv + position + 1);
    if (word == "--describe")
        print_msg("%s", kaz::detail::describedText(description).c_str());
    else if (word == "-version" || word == "--version")
        print_msg("%s", kaz::detail::versionText(description).c_str());
    else
        print_msg("%s", kaz::detail::usageText(description).c_str());
    return done;
}

/// The status that ends the tool: a full disk must not pass for a good end.
int written(int status, const char* program) {
    if (status != done || std::ferror(stdout) == 0)
        return status;
    print_err("%s: standard output: cannot be written", program);
    return notWritten;
}

/// A good line, into the application's set.
bool parseForApplication(const Description& description, LineReading& reading) {
    std::vector<arg_type_enum> required, optional;
    for (int i = 0; i < description.optionCount; ++i)
        (description.options[i].required ? required : optional)
            .push_back(description.options[i].type);
    required.push_back(arg_end);
    optional.push_back(arg_end);
    std::vector<char*>& words = reading.words();
    // What has been examined is parsed again, now into the set that the tool's queries ask, and
    // with the messages of the parser.
    words.push_back(nullptr); // argv ends so
    if (!kaz_arg_parse(static_cast<int>(words.size()) - 1, words.data(), required.data(),
                       optional.data(), 0, false))
        return false;
    KazParsedArgs& args = *KazApp::getInstance()->getParsedArgs();
    // Not parsed: behind "--" what begins with "-" would be taken for an option.
    for (const char* const argument : reading.rest())
        args.addUntagged(argument);
    return true;
}

} // namespace

int KazCommandLine::parse(int argc, char** argv) const {
    LineReading reading(description_, argc, argv);
    // Before the problem: who asks for help has often made a mistake.
    if (const int position = reading.wordPosition(); position > 0)
        return written(obey(description_, completer_, position, argc, argv), description_.program);
    const std::string problem = reading.problem();
    if (!problem.empty()) {
        reportProblem(description_, problem,
                      reading.isSomethingMissing() ? reading.swallowedOptions()
                                                   : std::vector<std::string>());
        return wrongUsage;
    }
    givenWords() = reading.given();
    if (!parseForApplication(description_, reading)) {
        reportProblem(description_, "the command line cannot be used", {});
        return wrongUsage;
    }
    return run;
}

void KazCommandLine::complain(const char* format, ...) const {
    va_list args;
    va_start(args, format);
    KazString problem;
    problem.formatV(format, args);
    va_end(args);
    reportProblem(description_, problem.getValue(), {});
}

bool KazCommandLine::isGiven(const char* word) const {
    const std::vector<std::string>& words = givenWords();
    return std::find(words.begin(), words.end(), word) != words.end();
}
