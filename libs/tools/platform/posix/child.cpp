// SPDX-License-Identifier: Apache-2.0
// A child is awaited exactly once, here or, when it outlives the patience of stop(), by a later
// reapAbandoned(). Until then its number is its own, so that signals to the number and to its
// group reach nobody else. The list of abandoned ones has room before a child is started: to
// abandon one cannot fail.
#include "tools/platform/posix/child.h"

#include "tools/platform/deadline.h"

#include <algorithm>
#include <csignal>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <vector>

namespace kaz::host {

namespace {

/// Never destroyed, as static objects of a tool may start programs to the very end.
std::vector<pid_t>& abandoned() {
    static auto& children = *new std::vector<pid_t>;
    return children;
}

} // namespace

void reapAbandoned() {
    std::vector<pid_t>& children = abandoned();
    // Ended, or awaited by somebody else; both leave the list.
    std::erase_if(children, [](pid_t id) { return ::waitpid(id, nullptr, WNOHANG) != 0; });
    children.reserve(children.size() + 1);
}

void abandon(pid_t id) noexcept {
    abandoned().push_back(id);
}

// The C library's own declaration does not link from C++.
Child::Child(pid_t id, bool leadsGroup)
    : id_(id),
      ending_(static_cast<int>(::syscall(SYS_pidfd_open, id, 0))),
      leadsGroup_(leadsGroup) {}

Child::~Child() {
    if (!ended_ && leadsGroup_)
        stop();
    await(0);
}

bool Child::await(int flags) {
    if (ended_)
        return true;
    const pid_t result = retry([&] { return ::waitpid(id_, &status_, flags); });
    // A tool that ignores SIGCHLD or awaits every child takes the status away; the child has then
    // ended with nothing known of how.
    known_ = result == id_;
    ended_ = result != 0;
    return ended_;
}

void Child::signal(int number) const {
    if (!ended_)
        ::kill(id_, number);
}

void Child::stop() {
    // As long as it has not been awaited, its number is not given to another group.
    ::kill(-id_, SIGKILL);
    const Deadline patience(1000);
    pollfd wait{ending_.get(), POLLIN, 0};
    while (!await(WNOHANG) && !patience.isOver())
        ::poll(&wait, 1, ending_.isOpen() ? patience.left() : 10);
    if (!ended_)
        // Even SIGKILL waits for a call of the system that cannot be interrupted, as one to a file
        // system that does not answer.
        abandon(id_);
    ended_ = true;
}

Completion Child::completion() const {
    Completion result;
    result.status = known_ && WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
    result.signal = known_ && WIFSIGNALED(status_) ? WTERMSIG(status_) : 0;
    return result;
}

} // namespace kaz::host
