// SPDX-License-Identifier: Apache-2.0
// A child is held by one loop that polls all its streams: to write all input before reading would
// stop both sides as soon as a pipe is full. With a terminal its end is no sign, since this side
// holds the slave open, and so the child's own end is asked for as well.
#include "testkit/process.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

namespace moxkit {

namespace {

using Clock = std::chrono::steady_clock;

struct Descriptor {
    int value = -1;
    Descriptor() = default;
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return value; }
    void reset() {
        if (value >= 0)
            close(value);
        value = -1;
    }
};

struct Pipe {
    Descriptor read, write;
    Pipe() {
        int ends[2];
        // Closed in other children, or an end that they hold would keep the stream open.
        if (pipe2(ends, O_CLOEXEC) != 0)
            std::abort();
        read.value = ends[0];
        write.value = ends[1];
    }
};

struct Terminal {
    Descriptor master, slave;
    explicit Terminal(bool wanted) {
        if (wanted && openpty(&master.value, &slave.value, nullptr, nullptr, nullptr) != 0)
            std::abort();
        if (wanted)
            fcntl(master, F_SETFD, FD_CLOEXEC);
    }
    bool echoes() const {
        termios state{};
        return tcgetattr(slave, &state) == 0 && (state.c_lflag & ECHO) != 0;
    }
};

std::string programPath(const std::string& name) {
    return name.find('/') == std::string::npos ? binDirectory() + "/" + name : name;
}

/// A program starts with the dispositions that a terminal's shell would give
/// it, whatever this test was started from.
void resetSignals() {
    for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE, SIGTSTP})
        std::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// Reads what there is; false at the end of the stream.
bool drain(int fd, std::string& text) {
    char buffer[4096];
    const ssize_t n = read(fd, buffer, sizeof buffer);
    if (n > 0)
        text.append(buffer, static_cast<std::size_t>(n));
    return n > 0 || (n < 0 && errno == EINTR);
}

/// A program and what the test and it say to each other.
class Child {
public:
    explicit Child(const RunOptions& options) : options_(options) {}

    Result run(const std::vector<std::string>& argv) {
        child_ = fork();
        if (child_ == 0)
            start(argv);
        in_.read.reset();
        out_.write.reset();
        err_.write.reset();
        hold();
        await();
        if (options_.pty)
            hearLastWords();
        if (isStopped_)
            result_.signal = SIGKILL;
        else if (WIFEXITED(status_))
            result_.status = WEXITSTATUS(status_);
        else if (WIFSIGNALED(status_))
            result_.signal = WTERMSIG(status_);
        return result_;
    }

private:
    [[noreturn]] void start(const std::vector<std::string>& argv) const {
        resetSignals();
        if (options_.pty) {
            login_tty(terminal_.slave); // a session of its own, with this terminal
        } else {
            dup2(in_.read, STDIN_FILENO);
            dup2(out_.write, STDOUT_FILENO);
        }
        if (!options_.ptyErrors)
            dup2(err_.write, STDERR_FILENO);
        if (!options_.stdoutFile.empty())
            dup2(open(options_.stdoutFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666),
                 STDOUT_FILENO);
        if (options_.closeStdout)
            close(STDOUT_FILENO);
        if (options_.closeStdin)
            close(STDIN_FILENO);
        // The tests are tools themselves; what they start is not meant to be nested.
        unsetenv("KAZCOREROOT");
        for (const auto& [name, value] : options_.env) {
            if (value == unset)
                unsetenv(name.c_str());
            else
                setenv(name.c_str(), value.c_str(), 1);
        }
        if (!options_.cwd.empty() && chdir(options_.cwd.c_str()) != 0)
            _exit(126);
        std::vector<char*> args;
        for (const std::string& arg : argv)
            args.push_back(const_cast<char*>(arg.c_str()));
        args.push_back(nullptr);
        const std::string program = programPath(argv[0]);
        execv(program.c_str(), args.data());
        _exit(127);
    }

    /// Moves bytes until both outputs of the child end.
    void hold() {
        while ((outOpen_ || errOpen_) && !isTimeUp()) {
            sendSignal();
            step();
            if (options_.pty && hasEnded())
                break;
        }
    }

    /// A child may close its outputs and go on.
    void await() {
        while (!hasEnded()) {
            isTimeUp();
            poll(nullptr, 0, 1);
        }
    }

    /// Ends the child then. The result shows a signal, by which a test sees it, also where the
    /// child itself has ended and left its outputs to somebody else.
    bool isTimeUp() {
        if (Clock::now() <= end_)
            return false;
        isStopped_ = true;
        if (!hasEnded())
            kill(child_, SIGKILL);
        return true;
    }

    bool hasEnded() {
        if (!ended_)
            ended_ = waitpid(child_, &status_, WNOHANG) == child_;
        return ended_;
    }

    /// What the child wrote last may still lie in the terminal.
    void hearLastWords() {
        pollfd last{terminal_.master, POLLIN, 0};
        while (poll(&last, 1, 20) > 0 && (last.revents & POLLIN) != 0)
            if (!drain(terminal_.master, result_.out))
                break;
        pollfd lastError{err_.read, POLLIN, 0};
        while (poll(&lastError, 1, 0) > 0 && drain(err_.read, result_.err)) {
        }
        result_.echoAtEnd = terminal_.echoes();
    }

    void sendSignal() {
        if (options_.signal == 0 || signalSent_ ||
            result_.out.find(options_.signalAfter) == std::string::npos)
            return;
        kill(child_, options_.signal);
        signalSent_ = true;
    }

    void step() {
        const bool feeding = !options_.pty && in_.write >= 0;
        std::array<pollfd, 3> fds{
            pollfd{options_.pty ? terminal_.master : (outOpen_ ? out_.read : -1), POLLIN, 0},
            pollfd{errOpen_ ? err_.read : -1, POLLIN, 0},
            pollfd{feeding ? in_.write : -1, POLLOUT, 0}};
        // Ten milliseconds: a signal, or the end of a child with a terminal, is noticed that late.
        if (poll(fds.data(), fds.size(), 10) < 0)
            return;
        if (fds[0].revents != 0)
            outOpen_ = drain(fds[0].fd, result_.out);
        if (fds[1].revents != 0)
            errOpen_ = drain(fds[1].fd, result_.err);
        if (fds[2].revents != 0)
            feed();
        if (options_.pty && !typed_ && !result_.out.empty() && fds[0].revents == 0)
            type();
    }

    void feed() {
        const std::size_t left = options_.input.size() - fed_;
        const ssize_t n = left > 0 ? write(in_.write, options_.input.data() + fed_, left) : 0;
        if (n > 0)
            fed_ += static_cast<std::size_t>(n);
        // A program that reads no further has closed its end, which is no failure of the test.
        if (n < 0 || fed_ == options_.input.size())
            in_.write.reset();
    }

    /// The program has written and is silent now: it waits for input.
    void type() {
        typed_ = true;
        result_.echoAtInput = terminal_.echoes();
        if (write(terminal_.master, options_.input.data(), options_.input.size()) < 0)
            outOpen_ = false;
    }

    const RunOptions& options_;
    const Clock::time_point end_ = Clock::now() + std::chrono::seconds(options_.timeoutSeconds);
    Pipe in_, out_, err_;
    Terminal terminal_{options_.pty};
    Result result_;
    pid_t child_ = -1;
    std::size_t fed_ = 0;
    int status_ = 0;
    bool outOpen_ = true;
    bool errOpen_ = true;
    bool typed_ = false;
    bool signalSent_ = false;
    bool ended_ = false;
    bool isStopped_ = false;
};

} // namespace

Result run(const std::vector<std::string>& argv, const RunOptions& options) {
    // A child that ends early would otherwise end the test with it.
    std::signal(SIGPIPE, SIG_IGN);
    return Child(options).run(argv);
}

std::string binDirectory() {
    char buffer[4096];
    const ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer);
    const std::string self(buffer, n > 0 ? static_cast<std::size_t>(n) : 0);
    return self.substr(0, self.rfind('/'));
}

} // namespace moxkit
