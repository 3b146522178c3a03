// SPDX-License-Identifier: Apache-2.0
// What a launched program writes is handed on until it ends, by itself or stopped. Nothing that is
// made for a child outlives the call.
#include "tools/platform/deadline.h"
#include "tools/platform/host.h"
#include "tools/platform/posix/child.h"
#include "tools/platform/posix/outlet.h"
#include "tools/platform/posix/spawning.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kaz::host {

namespace {

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
