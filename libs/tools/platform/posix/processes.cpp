#include "tools/platform/host.h"
#include "tools/platform/posix/descriptor.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kaz::host {

namespace {

/// Where the child's output goes.
class Redirection {
public:
    explicit Redirection(int output) {
        ::posix_spawn_file_actions_init(&actions_);
        for (int standard = 1; standard <= 2 && output >= 0 && error_ == 0; ++standard)
            error_ = ::posix_spawn_file_actions_adddup2(&actions_, output, standard);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;
    ~Redirection() { ::posix_spawn_file_actions_destroy(&actions_); }

    /// Why it could not be prepared, or 0.
    int error() const { return error_; }
    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_;
    int error_ = 0;
};

/// A started child; awaited at the latest when this goes away.
class Child {
public:
    explicit Child(pid_t id) : id_(id) {}
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() { await(0); }

    pid_t id() const { return id_; }

    /// Whether it has ended; with flags 0 waits for that.
    bool await(int flags) {
        if (ended_)
            return true;
        const pid_t result = retry([&] { return ::waitpid(id_, &status_, flags); });
        known_ = result == id_;
        ended_ = result != 0;
        return ended_;
    }

    /// Without a status when children are not kept for us (SIGCHLD is ignored).
    Completion completion() const {
        Completion result;
        result.status = known_ && WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
        result.signal = known_ && WIFSIGNALED(status_) ? WTERMSIG(status_) : 0;
        return result;
    }

private:
    pid_t id_;
    int status_ = 0;
    bool ended_ = false;
    bool known_ = false;
};

/// Hands on what is there to be read; false at the end of the output, and when
/// there is nothing for now.
bool drain(int output, OutputSink& sink) {
    std::array<char, 16 * 1024> buffer;
    const ssize_t got = retry([&] { return ::read(output, buffer.data(), buffer.size()); });
    if (got > 0)
        sink.write(buffer.data(), static_cast<std::size_t>(got));
    return got > 0;
}

bool atEnd(const pollfd& output) {
    return (output.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0 && (output.revents & POLLIN) == 0;
}

/// Until the output ends or the child does: a process that it left in the
/// background may hold the output open for ever.
void forward(int output, Child& child, OutputSink& sink) {
    // The C library's own declaration does not link from C++.
    const Descriptor ending(static_cast<int>(::syscall(SYS_pidfd_open, child.id(), 0)));
    const int pause = ending.isOpen() ? -1 : 20; // milliseconds, without that kind of handle
    std::array<pollfd, 2> wait{{{output, POLLIN, 0}, {ending.get(), POLLIN, 0}}};
    while (!child.await(WNOHANG)) {
        retry([&] { return ::poll(wait.data(), wait.size(), pause); });
        if ((wait[0].revents & POLLIN) != 0)
            drain(output, sink);
        else if (atEnd(wait[0]))
            return;
    }
    while (drain(output, sink)) {
    }
}

Completion notStarted(int number) {
    Completion result;
    result.error = number;
    result.status = -1;
    return result;
}

Completion start(char* const* arguments, OutputSink* sink) {
    std::fflush(nullptr);
    std::array<int, 2> ends{-1, -1};
    if (sink != nullptr && retry([&] { return ::pipe2(ends.data(), O_CLOEXEC); }) != 0)
        return notStarted(errno);
    Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    if (reading.isOpen())
        ::fcntl(reading.get(), F_SETFL, O_NONBLOCK);
    pid_t id = 0;
    const Redirection redirection(writing.get());
    const int error =
        redirection.error() != 0
            ? redirection.error()
            : ::posix_spawnp(&id, arguments[0], redirection.get(), nullptr, arguments, environ);
    if (error != 0)
        return notStarted(error);
    Child child(id);
    writing.close();
    // The reading end goes before the child is awaited on an exception, so that a
    // child that is still writing ends as well.
    const Descriptor output(std::move(reading));
    if (sink != nullptr)
        forward(output.get(), child, *sink);
    child.await(0);
    return child.completion();
}

} // namespace

Completion run(const std::vector<std::string>& arguments, OutputSink* sink) {
    if (arguments.empty() || !canName(arguments[0].c_str()))
        return notStarted(ENOENT);
    std::vector<std::string> texts = arguments;
    texts[0] = hostPath(texts[0].c_str());
    std::vector<char*> vector;
    for (std::string& text : texts)
        vector.push_back(text.data());
    vector.push_back(nullptr);
    return start(vector.data(), sink);
}

Completion runShell(const char* command, OutputSink* sink) {
    return run({"/bin/sh", "-c", command}, sink);
}

} // namespace kaz::host
