// SPDX-License-Identifier: Apache-2.0
// A command is run as often as it has allocations and calls that can fail, each time with
// another one that does. What is run is exactly what is printed where a run is not good, as
// a line for the shell, so that it can be run again by hand. All that the command works on is
// as before at the start of each run, and at the end.

#include "commands.h"
#include "common/output.h"
#include "common/trace_options.h"
#include "moxtool/swept_files.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr KazCommandLine::Option options[] = {
    {arg_Command, "LINE", "the command, one line for the shell", true},
    {arg_target, "DIR", "the files that it works on; all is undone after each run", false,
     KazCommandLine::AnyDirectory},
    traceTopics,
    traceFile};

constexpr KazCommandLine
    commandLine({"moxtool sweep", MOX_VERSION,
                 "Runs a command with each of its allocations and file calls failing.", options,
                 std::size(options), "", 0, 0});

constexpr int good = 0;
constexpr int failed = 1;

/// What the user has said. The library gives the children of a tool another one.
const std::string languageAtStart = [] {
    const char* const value = std::getenv("LANG");
    return std::string(value != nullptr ? value : "");
}();

/// One word for a shell.
std::string quoted(const std::string& word) {
    std::string result = "'";
    for (const char c : word)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string bytesOf(const KazString& text) {
    return {text.getValue(), static_cast<std::size_t>(text.getLength())};
}

/// How the command ended.
struct Ending {
    int status = -1;
    std::string failure; ///< "" for an exit status of its own
    std::string out;
    std::string err;
};

class Sweep {
public:
    Sweep(std::string line, const fs::path& directory)
        : line_(std::move(line)),
          library_((fs::path(kazHostPath(kazMoxBinDir()).getValue()) / "moxfault.so").string()),
          files_(directory),
          // In a directory of its own: among the temporary files of all users the name could be
          // another one's link from one run to the next.
          place_(kazHostPath(TI_tmpdir(nullptr, "fault")).getValue()),
          mark_(place_.empty() ? "" : place_ + "/mark") {}
    ~Sweep() {
        std::remove(mark_.c_str());
        std::remove(place_.c_str());
    }
    Sweep(const Sweep&) = delete;
    Sweep& operator=(const Sweep&) = delete;

    /// The status to end with.
    int run() {
        if (!isSound())
            return KazCommandLine::wrongUsage;
        // Single failures first, then all from one on: code that frees and tries again is found by
        // the latter only.
        sweep("allocation:", "", 1);
        // Without the very first one, the C++ runtime's reserve, nothing can be thrown.
        sweep("allocation:", "+", 2);
        // A full disk, a broken one and a missing right are what programs tell apart.
        for (const char* error : {":ENOSPC", ":EIO", ":EACCES"})
            sweep("file:", error, 1);
        if (KazInterruptWatch::isStopped())
            return failed;
        if (faults_ == 0) {
            print_err("moxtool sweep: nothing could be made to fail: the program is linked "
                      "statically, or not the first word of LINE");
            return KazCommandLine::wrongUsage;
        }
        print_msg("%ld runs, %ld faults injected, %ld failures", runs_, faults_, failures_);
        return hasOutputArrived() && failures_ == 0 ? good : failed;
    }

private:
    /// Does the command run well, and in the same way again?
    bool isSound() {
        if (!fs::exists(library_))
            return refuse("there is no " + library_);
        if (place_.empty())
            return refuse("there is no place for temporary files");
        const auto begin = std::chrono::steady_clock::now();
        good_ = runOnce(line_);
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - begin;
        // Twenty times what a good run takes: other work on the machine must not pass for a hang.
        // The inner limit keeps the number within an int.
        timeout_ = std::max(shortest, static_cast<int>(std::min(20 * time.count(), 1e8)));
        if (!good_.failure.empty() || good_.status != 0) {
            files_.restore();
            return refuse(good_.failure.empty() ? "LINE ends with status " +
                                                      std::to_string(good_.status) + " by itself"
                                                : "LINE by itself: " + good_.failure);
        }
        files_.keepGood();
        files_.restore();
        // With the library and no fault: what differs now would differ in each run of the sweep.
        const Ending again = runOnce(lineWith("none"));
        const bool isSame = again.failure.empty() && again.status == 0 && again.out == good_.out &&
                            files_.spoilt().empty();
        files_.restore();
        return isSame || refuse("LINE does not do the same when it is run again, with the "
                                "library that makes calls fail: " +
                                (again.failure.empty() ? firstLine(again.err) : again.failure));
    }

    static bool refuse(const std::string& problem) {
        commandLine.complain("%s", kazPrintable(problem.c_str()).getValue());
        return false;
    }

    static std::string firstLine(const std::string& text) {
        return text.empty() ? "its output or its files differ" : text.substr(0, text.find('\n'));
    }

    /// What is run, and shown where it is not good.
    std::string lineWith(const std::string& fault) const {
        // The variables stand in front of LINE and so hold for its first command, which has to be
        // the program.
        return "MOX_FAULT=" + fault + " LD_PRELOAD=" + quoted(library_) + " " + line_;
    }

    Ending runOnce(const std::string& line) {
        ++runs_;
        KazCommand command = KazCommand::shell(line.c_str());
        command.setTimeout(timeout_).setVariable("MOX_FAULT_MARK", mark_.c_str());
        command.setVariable("LANG", languageAtStart.empty() ? nullptr : languageAtStart.c_str());
        // What this tool hands on to its children would make the program another one than by hand.
        for (const char* variable : {"KAZCOREROOT", "KAZ_PROGRESS_FD", "KAZ_DIALOGUE"})
            command.setVariable(variable, nullptr);
        // The mark of the run before would be taken for that of this one.
        std::remove(mark_.c_str());
        command.run();
        Ending ending{command.getStatus(), "", bytesOf(command.getOutput()),
                      bytesOf(command.getErrors())};
        constexpr int ofSignals = 128; // as shells tell that a program was ended by one
        if (command.isTimedOut())
            ending.failure = "has not ended after " + std::to_string(timeout_) + " ms";
        else if (command.getSignal() != 0)
            ending.failure = "ended by signal " + std::to_string(command.getSignal());
        else if (ending.status > ofSignals)
            ending.failure = "ended by signal " + std::to_string(ending.status - ofSignals);
        else if (command.getError() != 0)
            ending.failure = "not started";
        return ending;
    }

    /// Lets one after the other fail, until a run meets none any more.
    void sweep(const std::string& begin, const std::string& end, long first) {
        for (long n = first; !KazInterruptWatch::isStopped(); ++n) {
            const std::string line = lineWith(std::string(begin).append(std::to_string(n)) += end);
            const Ending ending = runOnce(line);
            const bool isHit = fs::exists(mark_);
            // An interruption ends the command, too, and would be judged as its failure.
            if (isHit && !KazInterruptWatch::isStopped())
                judge(ending, line);
            files_.restore();
            // The number is beyond what the command does. Without that the loop would not end.
            if (!isHit)
                return;
        }
    }

    void judge(const Ending& ending, const std::string& line) {
        ++faults_;
        const std::string problem = problemOf(ending);
        if (problem.empty())
            return;
        ++failures_;
        const KazString call = nameOfCall().c_str();
        print_msg("%s: %s: %s", call.getValue(), kazPrintable(problem.c_str()).getValue(),
                  kazPrintable(line.c_str()).getValue());
    }

    /// What is not good about a run; "" when all is.
    std::string problemOf(const Ending& ending) const {
        if (!ending.failure.empty())
            return ending.failure;
        // 0 is a whole success and 1 a failure that was told; a call that fails explains no other.
        if (ending.status != 0 && ending.status != 1)
            return "ended with status " + std::to_string(ending.status);
        if (ending.status == 1 && ending.err.empty())
            return "ended with status 1 and no message";
        // A success has to be a whole one: a failure that is survived may not change the result.
        if (ending.status == 0 && ending.out != good_.out)
            return "ended with status 0 and other output";
        const std::string file = files_.spoilt();
        // Asked last, as it reads all files.
        return file.empty() ? file : file + " is neither as before nor as it should become";
    }

    std::string nameOfCall() const {
        std::FILE* const file = std::fopen(mark_.c_str(), "r");
        if (file == nullptr)
            return "?";
        char name[64] = "";
        const std::size_t length = std::fread(name, 1, sizeof name - 1, file);
        std::fclose(file);
        return std::string(name, length);
    }

    static constexpr int shortest = 10000; ///< milliseconds

    std::string line_;
    std::string library_;
    SweptFiles files_;
    std::string place_;
    /// The library that injects writes the name of the call into this file: that it is there
    /// tells that the run has met its fault.
    std::string mark_;
    Ending good_;
    int timeout_ = 600000; ///< milliseconds; of the first run, which says how long one takes
    long runs_ = 0;
    long faults_ = 0;
    long failures_ = 0;
};

/// "" where none is given. What is not made for this is refused: all in it that others change
/// meanwhile would be undone.
bool findDirectory(fs::path& directory) {
    const char* const given = kaz_arg_text_or(arg_target, nullptr);
    if (given == nullptr)
        return true;
    const KazString host = kazHostPath(given);
    std::error_code error;
    directory = fs::canonical(host.getValue(), error);
    if (error || !fs::is_directory(directory, error)) {
        commandLine.complain("%s is no directory", kazPrintable(given).getValue());
        return false;
    }
    const char* const home = std::getenv("HOME");
    // By identity, since a home directory may be named through links.
    const bool isHome = home != nullptr && fs::equivalent(directory, home, error);
    if (isHome || directory == directory.root_path()) {
        commandLine.complain("%s is not made for this: a directory of its own is wanted",
                             kazPrintable(given).getValue());
        return false;
    }
    return true;
}

} // namespace

int sweepCommand(int argc, char** argv) {
    if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
        return status;
    const char* const line = kaz_arg_repeating_text(arg_Command, 0, 0, nullptr);
    if (kaz_arg_repeating_text(arg_Command, 1, 0, nullptr) != nullptr) {
        commandLine.complain("one command is run at a time");
        return KazCommandLine::wrongUsage;
    }
    fs::path directory;
    if (!findDirectory(directory))
        return KazCommandLine::wrongUsage;
    // From here on a signal only stops the loop, so that the files are put back.
    const KazInterruptWatch watch;
    int status = failed;
    try {
        status = Sweep(line, directory).run();
    } catch (const fs::filesystem_error& problem) {
        print_err("moxtool sweep: %s", kazPrintable(problem.what()).getValue());
    }
    // After everything has been put back; who started this sees that a signal ended it.
    KazInterruptWatch::endBySignal();
    return status;
}
