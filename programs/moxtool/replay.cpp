// SPDX-License-Identifier: Apache-2.0
// A recording is a test: its tool is started again, gets the answers that its user gave, and
// is recorded anew. Both recordings are compared line by line, as they stand in the files.

#include "commands.h"
#include "common/trace_options.h"
#include "moxtool/recording.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <optional>
#include <regex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

constexpr KazCommandLine::Option options[] = {
    {arg_x, "PATTERN TEXT", "replace each match of PATTERN by TEXT before lines are compared"},
    {arg_update, nullptr, "take what is new over into FILE"},
    traceTopics,
    traceFile};

constexpr KazCommandLine commandLine(
    {"moxtool replay", MOX_VERSION, "Runs tools again and compares what they say with recordings.",
     options, std::size(options), "FILE ...", 1, -1, KazCommandLine::AnyFile});

constexpr int good = 0;
constexpr int failed = 1;

/// What is replaced before lines are compared: times, places, whatever differs each time.
class Replacements {
public:
    /// False, with a complaint, for a pattern that is none.
    bool read() {
        const char* pattern;
        for (int i = 0; (pattern = kaz_arg_repeating_text(arg_x, i, 0, nullptr)) != nullptr; ++i)
            if (!add(pattern, kaz_arg_repeating_text(arg_x, i, 1, nullptr)))
                return false;
        return true;
    }

    std::string applied(std::string line) const {
        for (const auto& [pattern, text] : pairs_)
            // In the order of the line, each on what the one before has left.
            line = std::regex_replace(line, pattern, text);
        return line;
    }

private:
    /// The library's usual matcher goes one call deeper with each character, so that a long
    /// line would end the process; the other one does not, and knows no back-references.
    static constexpr auto flags = std::regex::ECMAScript | std::regex_constants::__polynomial;
    /// Its compiler goes deeper with each bracket.
    static constexpr std::size_t longest = 1000;

    bool add(const char* pattern, const char* text) {
        try {
            // Refused as the library would refuse it, so that there is one way to tell.
            if (std::strlen(pattern) > longest)
                throw std::regex_error(std::regex_constants::error_space);
            pairs_.emplace_back(std::regex(pattern, flags), text);
            return true;
        } catch (const std::regex_error& error) {
            commandLine.complain("%s is no pattern: %s", kazPrintable(pattern).getValue(),
                                 reasonOf(error.code()));
            return false;
        }
    }

    static const char* reasonOf(std::regex_constants::error_type code) {
        namespace constants = std::regex_constants;
        if (code == constants::error_space || code == constants::error_stack)
            return "it is too large";
        if (code == constants::error_backref || code == constants::error_complexity)
            return "back-references are not known";
        if (code == constants::error_paren || code == constants::error_brack ||
            code == constants::error_brace)
            return "its brackets do not match";
        return "it is not well-formed";
    }

    std::vector<std::pair<std::regex, std::string>> pairs_;
};

/// No recording is of that size; what never ends would fill the memory.
constexpr std::size_t sizeLimit = std::size_t{256} << 20;

/// The text, or nothing with errno set.
std::optional<std::string> contentsOf(const KazString& path) {
    errno = 0;
    // Some hosts open a directory as a file and fail at the first reading.
    if (TI_isDirectory(path)) {
        errno = EISDIR;
        return std::nullopt;
    }
    std::FILE* const stream = TI_fopen(path, "rb");
    if (stream == nullptr)
        return std::nullopt;
    std::string text;
    char block[65536];
    bool isWhole = true;
    for (std::size_t got; isWhole && (got = std::fread(block, 1, sizeof block, stream)) > 0;) {
        text.append(block, got);
        // Looked at with each block: what never ends has no size that could be asked for.
        isWhole = text.size() <= sizeLimit;
    }
    if (!isWhole)
        errno = EFBIG;
    isWhole = isWhole && std::ferror(stream) == 0;
    std::fclose(stream);
    return isWhole ? std::optional(std::move(text)) : std::nullopt;
}

std::string reason() {
    return std::generic_category().message(errno != 0 ? errno : EIO);
}

/// A file for the new recording, as long as it is needed.
class NewRecording {
public:
    NewRecording() : path_(TI_tmpname(nullptr, "replay")) {}
    NewRecording(const NewRecording&) = delete;
    NewRecording& operator=(const NewRecording&) = delete;
    ~NewRecording() {
        if (exists())
            TI_remove(path_);
    }

    bool exists() const { return !path_.isEmpty(); }
    const KazString& path() const { return path_; }

private:
    KazString path_;
};

/// The tool beside this program, or along the search path.
std::string programOf(const std::string& tool) {
    const KazString beside = kazComposePath(kazMoxBinDir(), tool.c_str());
    // The one beside is of the same version; another may stand first in the search path.
    for (const KazString& file : {beside, beside + ".exe"})
        if (TI_isFile(file))
            return file.getValue();
    return tool;
}

/// Starts the tool as the outermost one. False, with a message, when it does not start.
bool play(const Recording& recording, const KazString& to) {
    KazCommand command(programOf(recording.tool).c_str());
    for (const std::string& argument : recording.arguments)
        command.add(argument.c_str());
    // Whole beforehand: answers are lines, and the tool takes one at each question.
    command.setInput(KazString(recording.input.c_str()));
    command.setVariable("KAZ_DIALOGUE", kazHostPath(to));
    // A tool that finds these takes itself for another one's child.
    for (const char* variable : {"KAZCOREROOT", "KAZ_PROGRESS_FD"})
        command.setVariable(variable, nullptr);
    command.run();
    if (command.getError() != 0)
        print_err("moxtool: %s", command.getErrorText().getValue());
    return command.getError() == 0;
}

/// One recording, replayed.
class Replay {
public:
    Replay(const char* file, const Replacements& replacements)
        : file_(file), replacements_(replacements) {}

    int run() {
        const std::optional<std::string> bytes = contentsOf(file_);
        if (!bytes)
            return refuse("cannot be read: " + reason());
        const Recording before = readRecording(*bytes);
        if (!before.problem.empty())
            return refuse(before.problem, before.problemLine);
        const NewRecording place;
        if (!place.exists())
            return fail("there is no place for a new recording: " + reason());
        if (!play(before, place.path()))
            return failed;
        const std::optional<std::string> newBytes = contentsOf(place.path());
        // Nothing to read is a recording with a problem, which is told below.
        const Recording after = readRecording(newBytes.value_or(""));
        if (!after.problem.empty())
            return fail(before.tool + " has not been recorded");
        // There are bytes here: of none no recording without a problem is read.
        return compare(before, after) || update(*newBytes) ? good : failed;
    }

private:
    int refuse(const std::string& problem, int line = 0) const {
        fail(problem, line);
        return KazCommandLine::wrongUsage;
    }
    int fail(const std::string& problem, int line = 0) const {
        const std::string place = line > 0 ? ":" + std::to_string(line) : "";
        print_err("%s%s: %s", kazPrintable(file_).getValue(), place.c_str(),
                  kazPrintable(problem.c_str()).getValue());
        return failed;
    }

    /// Tells the first difference, unless it is to be taken over.
    bool compare(const Recording& before, const Recording& after) const {
        const std::size_t count = std::max(before.lines.size(), after.lines.size());
        for (std::size_t i = 0; i < count; ++i) {
            const std::string expected = lineOf(before, i), got = lineOf(after, i);
            if (expected == got)
                continue;
            const int line =
                i < before.lines.size() ? before.lines[i].number : before.lines.back().number + 1;
            if (!isUpdate())
                fail(std::string("expected ").append(expected).append(", got ").append(got), line);
            return false;
        }
        return true;
    }

    /// What is compared: no line is like that of the end.
    std::string lineOf(const Recording& recording, std::size_t index) const {
        return index < recording.lines.size() ? replacements_.applied(recording.lines[index].text)
                                              : "the end";
    }

    static bool isUpdate() { return kaz_arg_text(arg_update, 0, nullptr) != nullptr; }

    bool update(const std::string& bytes) const {
        if (!isUpdate())
            return false;
        if (TI_writefile(file_, bytes.data(), bytes.size()) == 0)
            return true;
        fail("cannot be written: " + reason());
        return false;
    }

    const char* file_;
    const Replacements& replacements_;
};

} // namespace

int replayCommand(int argc, char** argv) {
    if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
        return status;
    Replacements replacements;
    if (!replacements.read())
        return KazCommandLine::wrongUsage;
    int status = good;
    for (int i = 0; i < kaz_arg_untagged_count(); ++i)
        // All are replayed; the worst is the answer.
        status = std::max(status, Replay(kaz_arg_get_untagged(i), replacements).run());
    return status;
}
