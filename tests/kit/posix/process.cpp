#include "kit/process.h"

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

namespace kit {

namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
    int read = -1;
    int write = -1;
    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            std::abort();
        read = ends[0];
        write = ends[1];
    }
    ~Pipe() {
        closeRead();
        closeWrite();
    }
    void closeRead() { closeEnd(read); }
    void closeWrite() { closeEnd(write); }
    static void closeEnd(int& fd) {
        if (fd >= 0)
            close(fd);
        fd = -1;
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
};

struct Terminal {
    int master = -1;
    int slave = -1;
    explicit Terminal(bool wanted) {
        if (wanted && openpty(&master, &slave, nullptr, nullptr, nullptr) != 0)
            std::abort();
        if (wanted)
            fcntl(master, F_SETFD, FD_CLOEXEC);
    }
    ~Terminal() {
        Pipe::closeEnd(master);
        Pipe::closeEnd(slave);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

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

[[noreturn]] void startChild(const std::vector<std::string>& argv, const RunOptions& options,
                             const Terminal& terminal, const Pipe& in, const Pipe& out,
                             const Pipe& err) {
    if (options.pty) {
        login_tty(terminal.slave); // a session of its own, with this terminal
    } else {
        dup2(in.read, STDIN_FILENO);
        dup2(out.write, STDOUT_FILENO);
    }
    dup2(err.write, STDERR_FILENO);
    if (!options.stdoutFile.empty())
        dup2(open(options.stdoutFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), STDOUT_FILENO);
    if (options.closeStdout)
        close(STDOUT_FILENO);
    if (options.closeStdin)
        close(STDIN_FILENO);
    // The tests are tools themselves; what they start is not meant to be nested.
    unsetenv("KAZCOREROOT");
    for (const auto& [name, value] : options.env) {
        if (value == unset)
            unsetenv(name.c_str());
        else
            setenv(name.c_str(), value.c_str(), 1);
    }
    if (!options.cwd.empty() && chdir(options.cwd.c_str()) != 0)
        _exit(126);
    std::vector<char*> args;
    for (const std::string& arg : argv)
        args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    const std::string program = programPath(argv[0]);
    execv(program.c_str(), args.data());
    _exit(127);
}

/// Reads what there is; false at the end of the stream.
bool drain(int fd, std::string& text) {
    char buffer[4096];
    const ssize_t n = read(fd, buffer, sizeof buffer);
    if (n > 0)
        text.append(buffer, static_cast<std::size_t>(n));
    return n > 0 || (n < 0 && errno == EINTR);
}

/// Moves bytes between the test and the child until both its outputs end.
class Conversation {
public:
    Conversation(const RunOptions& options, pid_t child, Terminal& terminal, Pipe& in, Pipe& out,
                 Pipe& err, Result& result)
        : options_(options),
          child_(child),
          terminal_(terminal),
          in_(in),
          out_(out),
          err_(err),
          result_(result) {}

    void hold() {
        const auto start = Clock::now();
        outOpen_ = errOpen_ = true;
        while (outOpen_ || errOpen_) {
            const auto elapsed =
                std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
            if (elapsed > std::chrono::seconds(options_.timeoutSeconds)) {
                result_.timedOut = true;
                kill(child_, SIGKILL);
                break;
            }
            sendSignal(elapsed.count());
            step();
            if (options_.pty && childEnded())
                break;
        }
    }

    bool childEnded() {
        if (!ended_)
            ended_ = waitpid(child_, &status_, WNOHANG) == child_;
        return ended_;
    }

    int status() {
        if (!ended_)
            waitpid(child_, &status_, 0);
        ended_ = true;
        return status_;
    }

private:
    void sendSignal(long long elapsedMs) {
        if (options_.signal == 0 || signalSent_)
            return;
        const bool due = options_.signalAfter.empty()
                             ? elapsedMs >= options_.signalDelayMs
                             : result_.out.find(options_.signalAfter) != std::string::npos;
        if (due) {
            kill(child_, options_.signal);
            signalSent_ = true;
        }
    }

    void step() {
        const bool feeding = !options_.pty && in_.write >= 0;
        std::array<pollfd, 3> fds{
            pollfd{options_.pty ? terminal_.master : (outOpen_ ? out_.read : -1), POLLIN, 0},
            pollfd{errOpen_ ? err_.read : -1, POLLIN, 0},
            pollfd{feeding ? in_.write : -1, POLLOUT, 0}};
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
        if (n < 0 || fed_ == options_.input.size())
            in_.closeWrite();
    }

    /// The program has written and is silent now: it waits for input.
    void type() {
        typed_ = true;
        result_.echoAtInput = terminal_.echoes();
        if (write(terminal_.master, options_.input.data(), options_.input.size()) < 0)
            outOpen_ = false;
    }

    const RunOptions& options_;
    pid_t child_;
    Terminal& terminal_;
    Pipe& in_;
    Pipe& out_;
    Pipe& err_;
    Result& result_;
    std::size_t fed_ = 0;
    int status_ = 0;
    bool outOpen_ = false;
    bool errOpen_ = false;
    bool typed_ = false;
    bool signalSent_ = false;
    bool ended_ = false;
};

} // namespace

Result run(const std::vector<std::string>& argv, const RunOptions& options) {
    std::signal(SIGPIPE, SIG_IGN);
    Result result;
    Pipe in;
    Pipe out;
    Pipe err;
    Terminal terminal(options.pty);
    const pid_t child = fork();
    if (child == 0) {
        resetSignals();
        startChild(argv, options, terminal, in, out, err);
    }
    in.closeRead();
    out.closeWrite();
    err.closeWrite();

    Conversation conversation(options, child, terminal, in, out, err, result);
    conversation.hold();
    const int status = conversation.status();
    if (options.pty) {
        // What the child wrote last may still lie in the terminal.
        pollfd last{terminal.master, POLLIN, 0};
        while (poll(&last, 1, 20) > 0 && (last.revents & POLLIN) != 0)
            if (!drain(terminal.master, result.out))
                break;
        pollfd lastError{err.read, POLLIN, 0};
        while (poll(&lastError, 1, 0) > 0 && drain(err.read, result.err)) {
        }
        result.echoAtEnd = terminal.echoes();
    }
    if (WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
    return result;
}

std::string binDirectory() {
    char buffer[4096];
    const ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer);
    const std::string self(buffer, n > 0 ? static_cast<std::size_t>(n) : 0);
    return self.substr(0, self.rfind('/'));
}

} // namespace kit
