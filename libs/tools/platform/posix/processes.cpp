// SPDX-License-Identifier: Apache-2.0
// Starting programs. The C library's posix_spawn takes no copy of the address space, so
// that a start takes the same time however large the tool is. Descriptors are never
// those of the standard streams, and nothing that is made for a child outlives the call
// or is handed on to another child.
#include "tools/platform/deadline.h"
#include "tools/platform/host.h"
#include "tools/platform/posix/child.h"
#include "tools/platform/posix/descriptor.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kaz::host {

namespace {

/// Under which number a child finds the pipe for its reports: the first that is free.
constexpr int reportNumber = STDERR_FILENO + 1;

/// Without a standard stream a new descriptor would get its number, and be replaced
/// with it in the child.
Descriptor besideStandard(Descriptor descriptor) {
    if (!descriptor.isOpen() || descriptor.get() > STDERR_FILENO)
        return descriptor;
    return Descriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

/// What a child starts with.
class Setup {
public:
    Setup() {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawnattr_init(&attributes_);
    }
    Setup(const Setup&) = delete;
    Setup& operator=(const Setup&) = delete;
    ~Setup() {
        ::posix_spawnattr_destroy(&attributes_);
        ::posix_spawn_file_actions_destroy(&actions_);
    }

    void give(int descriptor, int standard) {
        note([&] { return ::posix_spawn_file_actions_adddup2(&actions_, descriptor, standard); });
    }
    void giveNothing(int standard) {
        note([&] {
            return ::posix_spawn_file_actions_addopen(&actions_, standard, "/dev/null", O_RDWR, 0);
        });
    }
    /// A step of the child itself, so it also meets what another thread has opened since.
    void closeFrom(int first) {
        note([&] { return ::posix_spawn_file_actions_addclosefrom_np(&actions_, first); });
    }
    void enter(const std::string& directory) {
        note([&] { return ::posix_spawn_file_actions_addchdir_np(&actions_, directory.c_str()); });
    }
    /// Its signals, and whether it leads a group or a session of its own.
    void setAttributes(short flags) {
        sigset_t none;
        sigset_t defaults;
        sigemptyset(&none);
        sigemptyset(&defaults);
        // What is ignored stays so over an exec, and so does a mask. Programs rarely expect it of
        // these two.
        for (const int signal : {SIGPIPE, SIGCHLD})
            sigaddset(&defaults, signal);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setsigdefault(&attributes_, &defaults);
        ::posix_spawnattr_setflags(&attributes_, static_cast<short>(flags | POSIX_SPAWN_SETSIGMASK |
                                                                    POSIX_SPAWN_SETSIGDEF));
    }

    /// Fails with an errno value, which it gives; 0 and the child's number otherwise.
    /// The search goes along this process's PATH, whatever the child's variables say.
    int spawn(char* const* arguments, char* const* variables, pid_t& id) {
        note([&] {
            return ::posix_spawnp(&id, arguments[0], &actions_, &attributes_, arguments, variables);
        });
        return error_;
    }

private:
    /// Takes a step unless an earlier one has failed.
    template <typename Step>
    void note(Step step) {
        if (error_ == 0)
            error_ = step();
    }

    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
    int error_ = 0;
};

/// This process's variables with the changes of a launch.
class Variables {
public:
    explicit Variables(const Launch& launch) {
        // The usual case copies nothing.
        if (launch.variables.empty() && launch.removed.empty() && launch.reports == nullptr)
            return;
        for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
            if (!isChanged(launch, *entry))
                entries_.push_back(*entry);
        texts_.reserve(launch.variables.size() + 1); // entries point into them
        for (const auto& [name, value] : launch.variables)
            add(name, value);
        if (launch.reports != nullptr)
            add(launch.reportVariable, std::to_string(reportNumber));
        entries_.push_back(nullptr);
    }

    char* const* get() const { return entries_.empty() ? environ : entries_.data(); }

private:
    void add(const std::string& name, const std::string& value) {
        std::string& text = texts_.emplace_back(name);
        entries_.push_back(text.append("=").append(value).data());
    }

    static bool isChanged(const Launch& launch, const char* entry) {
        const std::string_view name(entry, std::strcspn(entry, "="));
        if (launch.reports != nullptr && name == launch.reportVariable)
            return true;
        return std::find(launch.removed.begin(), launch.removed.end(), name) !=
                   launch.removed.end() ||
               std::any_of(launch.variables.begin(), launch.variables.end(),
                           [&](const auto& variable) { return variable.first == name; });
    }

    std::vector<std::string> texts_;
    std::vector<char*> entries_;
};

/// The words of the program as the system takes them. Empty when there is none that can
/// be named here.
std::vector<std::string> wordsOf(const Launch& launch) {
    if (launch.isLine)
        return {"/bin/sh", "-c", "--", launch.words.at(0)};
    if (launch.words.empty() || !canName(launch.words[0].c_str()))
        return {};
    std::vector<std::string> words = launch.words;
    words[0] = hostPath(words[0].c_str());
    const bool isRelative = words[0].find('/') != std::string::npos && words[0][0] != '/';
    // The child looks for its program after it has changed the directory, the caller meant it
    // before.
    if (isRelative && !launch.directory.empty())
        words[0] = hostPath(absolutePath(words[0].c_str()).c_str());
    return words;
}

/// A file in memory takes what a child shall read: it can neither block nor break.
Descriptor fileOf(std::string_view text) {
    Descriptor file(retry([] { return ::memfd_create("input", MFD_CLOEXEC); }));
    std::size_t done = 0;
    while (file.isOpen() && done < text.size()) {
        const ssize_t count =
            retry([&] { return ::write(file.get(), text.data() + done, text.size() - done); });
        if (count < 0)
            return Descriptor();
        done += static_cast<std::size_t>(count);
    }
    // The child shares the position and would begin at the end.
    if (file.isOpen() && ::lseek(file.get(), 0, SEEK_SET) != 0)
        return Descriptor();
    return file;
}

/// This process's end of a pipe that a child writes to, and who gets what arrives.
class Outlet {
public:
    /// Makes the pipe for a sink. False with errno set on failure.
    bool open(OutputSink* sink) {
        std::array<int, 2> ends{-1, -1};
        // Closed on exec from the first moment: another thread may start a program at any time.
        if (retry([&] { return ::pipe2(ends.data(), O_CLOEXEC); }) != 0)
            return false;
        sink_ = sink;
        reading_ = besideStandard(Descriptor(ends[0]));
        writing_ = besideStandard(Descriptor(ends[1]));
        return reading_.isOpen() && writing_.isOpen();
    }

    int reading() const { return reading_.get(); }
    int writing() const { return writing_.get(); }
    void closeWriting() { writing_.close(); }

    /// Hands on a piece of what poll() has found. At the end, and when reading fails for
    /// good, it is closed.
    void take(short found) {
        constexpr int patience = 8;
        if (found == 0)
            return;
        // A pipe at its end has POLLHUP without POLLIN.
        if ((found & POLLIN) == 0 || (read(size_) <= 0 && ++failures_ > patience))
            reading_.close();
    }

    /// Hands on what is there now, and no more: somebody may go on writing.
    void takeRest() {
        int there = 0;
        // A read of more than what is there would wait for whoever still has the other end.
        if (!reading_.isOpen() || ::ioctl(reading_.get(), FIONREAD, &there) != 0)
            return;
        while (there > 0) {
            const ssize_t got = read(std::min(size_, static_cast<std::size_t>(there)));
            if (got <= 0 && ++failures_ > 1)
                break;
            there -= static_cast<int>(std::max<ssize_t>(got, 0));
        }
    }

private:
    static constexpr std::size_t size_ = 64 * 1024; // as much as a pipe holds

    ssize_t read(std::size_t most) {
        std::array<char, size_> buffer;
        const ssize_t got = retry([&] { return ::read(reading_.get(), buffer.data(), most); });
        if (got > 0)
            sink_->write(buffer.data(), static_cast<std::size_t>(got));
        return got;
    }

    Descriptor reading_;
    Descriptor writing_;
    OutputSink* sink_ = nullptr;
    int failures_ = 0;
};

/// Standard output, standard error, reports.
using Outlets = std::array<Outlet, 3>;

/// Has a child end that is no longer wanted.
class Stopping {
public:
    explicit Stopping(StopWatch* watch) : watch_(watch) {}

    /// How long one may wait for the child before the next look(), in milliseconds.
    int patience(int most) const {
        constexpr int interval = 50;
        return watch_ == nullptr || (most >= 0 && most < interval) ? most : interval;
    }

    void look(const Child& child) {
        if (watch_ == nullptr)
            return;
        if (!isAsked_ && watch_->isStopWanted()) {
            constexpr int grace = 5000;
            child.signal(SIGTERM);
            isAsked_ = true;
            end_ = Deadline(grace);
        }
        // Again at each look, until the end is seen; a process that is dead takes no harm.
        if (end_.isOver())
            child.signal(SIGKILL);
    }

private:
    StopWatch* watch_;
    bool isAsked_ = false;
    Deadline end_{-1};
};

/// Hands output on until the child ends: a process that it left behind may hold the
/// output open for ever. True when it was stopped at the deadline.
bool attend(Child& child, Outlets& outlets, const Deadline& deadline, Stopping stopping) {
    constexpr int pause = 20; // milliseconds, where the end of a child cannot be waited for
    for (;;) {
        std::array<pollfd, 4> wait{{{outlets[0].reading(), POLLIN, 0},
                                    {outlets[1].reading(), POLLIN, 0},
                                    {outlets[2].reading(), POLLIN, 0},
                                    {child.ending(), POLLIN, 0}}};
        const bool canWait = child.ending() >= 0;
        const int patience = canWait ? stopping.patience(deadline.left()) : pause;
        // Not again after an interrupt: signals that come often would keep the end unseen.
        const bool isKnown = ::poll(wait.data(), wait.size(), patience) >= 0;
        for (std::size_t i = 0; i < outlets.size() && isKnown; ++i)
            outlets[i].take(wait[i].revents);
        const bool mayHaveEnded = !canWait || !isKnown || wait[3].revents != 0;
        // What it wrote before its end and is not taken yet lies in the pipes; takeRest() gets it.
        if (mayHaveEnded && child.await(WNOHANG))
            return false;
        stopping.look(child);
        if (deadline.isOver()) {
            child.stop();
            return true;
        }
    }
}

/// The tool outlives keys that are meant for the child.
class TerminalGivenAway {
public:
    explicit TerminalGivenAway(bool isGiven) : isGiven_(isGiven) {
        struct sigaction ignore = {};
        ignore.sa_handler = SIG_IGN;
        for (std::size_t i = 0; i < signals.size() && isGiven_; ++i)
            ::sigaction(signals[i], &ignore, &usual_[i]);
    }
    TerminalGivenAway(const TerminalGivenAway&) = delete;
    TerminalGivenAway& operator=(const TerminalGivenAway&) = delete;
    ~TerminalGivenAway() {
        for (std::size_t i = 0; i < signals.size() && isGiven_; ++i)
            ::sigaction(signals[i], &usual_[i], nullptr);
    }

private:
    static constexpr std::array<int, 2> signals{SIGINT, SIGQUIT};
    bool isGiven_;
    std::array<struct sigaction, 2> usual_{};
};

Completion notStarted(int number) {
    Completion result;
    result.error = number;
    result.status = -1;
    return result;
}

/// Fails with errno set.
bool prepareInput(const Launch& launch, Descriptor& input, Setup& setup) {
    if (launch.inputKind == Launch::text && !launch.isDetached) {
        input = besideStandard(fileOf(launch.input));
        setup.give(input.get(), STDIN_FILENO);
        return input.isOpen();
    }
    if (launch.inputKind != Launch::shared || launch.isDetached)
        setup.giveNothing(STDIN_FILENO);
    return true;
}

/// Fails with errno set.
bool prepareOutput(const Launch& launch, Outlets& outlets, Setup& setup) {
    const std::array<OutputSink*, 2> sinks{launch.output, launch.errors};
    for (int i = 0; i < 2; ++i) {
        const int standard = STDOUT_FILENO + i;
        Outlet& outlet = outlets[static_cast<std::size_t>(i)];
        OutputSink* sink = sinks[static_cast<std::size_t>(i)];
        if (launch.isDetached) {
            setup.giveNothing(standard);
        } else if (i == 1 && sink == sinks[0] && sink != nullptr) {
            setup.give(STDOUT_FILENO, standard);
        } else if (sink != nullptr) {
            if (!outlet.open(sink))
                return false;
            setup.give(outlet.writing(), standard);
        }
    }
    if (launch.reports == nullptr)
        return true;
    // Behind the others: one of their pipes may have this number here.
    if (!outlets[2].open(launch.reports))
        return false;
    setup.give(outlets[2].writing(), reportNumber);
    return true;
}

/// A child with a limit leads a group, so that all that it started can be ended with it. The keys
/// of the terminal then do not reach it.
short flagsOf(const Launch& launch) {
    if (launch.isDetached)
        return POSIX_SPAWN_SETSID;
    return launch.timeout > 0 ? POSIX_SPAWN_SETPGROUP : 0;
}

/// Why the child was not started, or 0.
/// The child's input is closed here on return; the writing ends of the pipes are the caller's to
/// close.
int spawn(const Launch& launch, Outlets& outlets, pid_t& id) {
    std::vector<std::string> words = wordsOf(launch);
    if (words.empty() || !canName(launch.directory.c_str()))
        return ENOENT;
    const Variables variables(launch);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    Setup setup;
    Descriptor input;
    if (!prepareInput(launch, input, setup) || !prepareOutput(launch, outlets, setup))
        return errno;
    // Behind all that gives the child something: the numbers here may be the ones to close.
    if (!launch.inheritsFiles)
        setup.closeFrom(launch.reports != nullptr ? reportNumber + 1 : STDERR_FILENO + 1);
    if (!launch.directory.empty())
        setup.enter(hostPath(launch.directory.c_str()));
    setup.setAttributes(flagsOf(launch));
    return setup.spawn(arguments.data(), variables.get(), id);
}

} // namespace

void start(const Launch& launch, Completion& completion) {
    flushStreams();
    // Before the start, as it also makes room for a child that is abandoned later.
    reapAbandoned();
    pid_t id = 0;
    Outlets outlets;
    if (const int error = spawn(launch, outlets, id); error != 0) {
        completion = notStarted(error);
        return;
    }
    if (launch.isDetached) {
        abandon(id);
        completion = Completion();
        return;
    }
    // Behind the start: what is ignored would stay so in the child.
    const TerminalGivenAway terminal(launch.ownsTerminal);
    const bool hasLimit = launch.timeout > 0;
    Child child(id, hasLimit);
    // These go before the child is awaited on an exception, so that one that is still
    // writing ends as well.
    Outlets open = std::move(outlets);
    for (Outlet& outlet : open)
        outlet.closeWriting();
    const bool isStopped =
        attend(child, open, Deadline(hasLimit ? launch.timeout : -1), Stopping(launch.watch));
    for (Outlet& outlet : open)
        outlet.takeRest();
    completion = child.completion();
    // One that has exited by itself just before it was stopped keeps its status.
    if (isStopped && completion.status == -1) {
        completion.signal = 0;
        completion.isStopped = true;
    }
}

const int interpreterFindsNothing = 127;
const int interpreterMayNotRun = 126;

std::string signalName(int signal) {
    const char* name = ::sigabbrev_np(signal);
    return "SIG" + (name != nullptr ? name : std::to_string(signal));
}

std::string defaultSearchPath() {
    std::array<char, 256> buffer;
    const std::size_t size = ::confstr(_CS_PATH, buffer.data(), buffer.size());
    return size > 0 && size <= buffer.size() ? buffer.data() : "/bin:/usr/bin";
}

std::string interpreterWord(std::string_view word) {
    std::string result = "'";
    for (const char c : word) {
        if (c == '\'')
            // Nothing within quotes ends them but a quote: they are closed, a quote is escaped, and
            // the one below opens them anew.
            result += "'\\'";
        result += c;
    }
    return result + '\'';
}

} // namespace kaz::host
