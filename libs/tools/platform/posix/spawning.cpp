// SPDX-License-Identifier: Apache-2.0
// The C library's posix_spawn takes no copy of the address space, so that a start takes the same
// time however large the tool is. Descriptors are never those of the standard streams, and nothing
// that is made for a child is handed on to another one.
#include "tools/platform/posix/spawning.h"

#include "tools/platform/host.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace kaz::host {

namespace {

/// Under which number a child finds the pipe for its reports: the first that is free.
constexpr int reportNumber = STDERR_FILENO + 1;

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

} // namespace

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

} // namespace kaz::host
