// SPDX-License-Identifier: Apache-2.0
// The line is read as far as the word in question, by the same reading that the tool would do,
// and the answer follows from what may stand there: values of an option in need of one, options,
// or arguments. Each candidate is a line for the shell's script. Nothing of a tool's own messages
// may get between them.
#include "tools/app/detail/LineCompletion.h"

#include "tools/app/KazApp.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/detail/LineReading.h"
#include "tools/messages/KazIODirector.h"
#include "tools/messages/detail/TraceRequest.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <string_view>

namespace kaz::detail {

namespace {

using Description = KazCommandLine::Description;

/// Who types sees nothing of what the tool has to say meanwhile, and a missing
/// configuration ends nothing.
class MuteDirector : public KazIODirector {
public:
    MuteDirector() { install(); }

    const TraceSilence noTraces;

protected:
    void doPrintMsg(const char*, va_list) override {}
    void doPrintError(const char*, va_list) override {}
    void doFatalError(const char*, va_list) override {}
    int doTtyStart(const char*) override { return 0; }
    void doTtyEnd(int) override {}
    Reply doConfirm(const KazString&, const KazString&, DialogType, Reply defaultReply) override {
        return defaultReply;
    }
    bool doGetUserInput(KazString&, const KazString&, const KazString&, bool) override {
        return false;
    }
    int doProgressStart(KazString, int) override { return 1; }
    void doProgressMsg(int, int, const char*, va_list) override {}
};

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

bool beginsNoCase(std::string_view text, std::string_view beginning) {
    // ASCII alone, whatever the locale: names of options have no other letters.
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return text.size() >= beginning.size() &&
           std::equal(beginning.begin(), beginning.end(), text.begin(),
                      [&lower](char a, char b) { return lower(a) == lower(b); });
}

/// What has been collected for one word.
class Candidates {
public:
    explicit Candidates(std::string begin) : begin_(std::move(begin)) {}

    const std::string& begin() const { return begin_; }

    /// One with a tab or a newline would read as something else.
    void add(std::string_view word, const char* help) {
        const std::string text = kaz::detail::orEmpty(help);
        if (word.find_first_of("\t\n") == word.npos && text.find_first_of("\t\n") == text.npos)
            lines.push_back(std::string(word) + "\t" + text);
    }
    static void offer(const char* word, const char* help, void* data) {
        auto& candidates = *static_cast<Candidates*>(data);
        if (word != nullptr && beginsWith(word, candidates.begin_))
            candidates.add(word, help);
    }

    std::vector<std::string> lines;

private:
    std::string begin_;
};

void addChoices(Candidates& candidates, const char* choices) {
    std::string_view rest = kaz::detail::orEmpty(choices);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('|'), rest.size());
        if (beginsWith(rest.substr(0, end), candidates.begin()))
            candidates.add(rest.substr(0, end), nullptr);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

/// The completer asks for what was typed before as the tool itself would.
void giveToApplication(const Description& description, LineReading& reading) {
    std::vector<arg_type_enum> types;
    for (int i = 0; i < description.optionCount; ++i)
        types.push_back(description.options[i].type);
    types.push_back(arg_end);
    std::vector<char*>& words = reading.words();
    // The result does not matter: a line that is being typed is hardly ever whole, and what was
    // read up to the mistake is in the set. Nothing is required, so that its end is no mistake.
    if (KazApp* const app = KazApp::getInstance())
        app->getParsedArgs()->examine(static_cast<int>(words.size()), words.data(), nullptr,
                                      types.data(), 0);
}

void addValues(Candidates& candidates, KazCommandLine::ValueKind kind, const char* choices,
               const char* option, KazCommandLine::Completer completer) {
    if (kind == KazCommandLine::AnyFile)
        candidates.lines.emplace_back(":file");
    else if (kind == KazCommandLine::AnyDirectory)
        candidates.lines.emplace_back(":directory");
    else if (kind == KazCommandLine::OneOf)
        addChoices(candidates, choices);
    else if (kind == KazCommandLine::OfTool && completer != nullptr)
        completer(option, candidates.begin().c_str(), Candidates::offer, &candidates);
}

/// Options that may still be given, and the words.
std::vector<std::pair<std::string, const char*>> optionsOf(const Description& description,
                                                           const LineReading& reading) {
    std::vector<std::pair<std::string, const char*>> options;
    for (int i = 0; i < description.optionCount; ++i) {
        const LineOption& option = description.options[i];
        const KazArgDescription& row = *KazArgDescription::find(option.type);
        // An option with a limit of 0 may be given once.
        if (reading.timesGiven(option.type) < std::max(row.repeatLimit, 1))
            options.emplace_back(row.text, option.help);
    }
    const std::vector<std::string>& given = reading.given();
    for (int i = 0; i < description.wordCount; ++i)
        if (std::find(given.begin(), given.end(), description.words[i].text) == given.end())
            options.emplace_back(description.words[i].text, description.words[i].help);
    options.emplace_back("-help", "show how it is used");
    if (findOption(description, arg_version) == nullptr)
        options.emplace_back("-version", "show the version");
    return options;
}

void addOptions(Candidates& candidates, const Description& description,
                const LineReading& reading) {
    const auto options = optionsOf(description, reading);
    // Exactly first: "-t" and "-T" are different options, and who types one does not want the
    // other.
    for (const auto& matches : {beginsWith, beginsNoCase}) {
        for (const auto& [text, help] : options)
            if (matches(text, candidates.begin()))
                candidates.add(text, help);
        if (!candidates.lines.empty())
            return;
    }
}

} // namespace

std::vector<std::string> completionsOf(const Description& description,
                                       KazCommandLine::Completer completer, std::size_t number,
                                       const std::vector<std::string>& words) {
    MuteDirector mute;
    // Copies, because an argument vector is not const. What stands behind the cursor
    // is left out: it cannot change what may stand here.
    std::vector<std::string> before(
        words.begin(), words.begin() + static_cast<std::ptrdiff_t>(std::min(number, words.size())));
    // The parser passes over the program's name and never writes to it.
    std::vector<char*> line{const_cast<char*>("")};
    for (std::string& word : before)
        line.push_back(word.data());
    // Refers to before, which therefore has to live as long.
    LineReading reading(description, static_cast<int>(line.size()), line.data());
    if (completer != nullptr)
        giveToApplication(description, reading);
    Candidates candidates(number < words.size() ? words[number] : "");
    int item = 0;
    // First of all, since a value may begin with "-" and even look like an option.
    if (const LineOption* const option = reading.optionInNeed(item)) {
        addValues(candidates, option->kind, option->choices,
                  KazArgDescription::find(option->type)->text, completer);
        return candidates.lines;
    }
    if (beginsWith(candidates.begin(), "-") && !reading.isEnded()) {
        addOptions(candidates, description, reading);
        return candidates.lines;
    }
    const bool fits =
        description.maxArguments < 0 || reading.argumentCount() < description.maxArguments;
    // A tool without arguments has an empty text for them, not a null.
    const bool takesArguments = fits && *description.arguments != '\0';
    if (takesArguments)
        addValues(candidates, description.argumentKind, nullptr, "", completer);
    // Options fill an empty word only where they would not drown names of files.
    if (candidates.begin().empty() && !reading.isEnded() &&
        (!takesArguments || description.argumentKind == KazCommandLine::AnyText))
        addOptions(candidates, description, reading);
    return candidates.lines;
}

} // namespace kaz::detail
