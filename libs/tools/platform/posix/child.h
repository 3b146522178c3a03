// SPDX-License-Identifier: Apache-2.0
/// @file
/// A process that was started, until its end.
#pragma once

#include "tools/platform/host_process.h"
#include "tools/platform/posix/descriptor.h"

#include <sys/types.h>

namespace kaz::host {

/// Awaited at the latest when this goes away; one that leads a group of its own is
/// stopped then instead.
class Child {
public:
    Child(pid_t id, bool leadsGroup);
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child();

    /// Becomes readable at the child's end. Not open where the host has no such thing:
    /// the child is then to be looked at again and again.
    int ending() const { return ending_.get(); }

    /// Whether it has ended; with flags 0 waits for that.
    bool await(int flags);

    /// Sends it a signal unless it was awaited.
    void signal(int number) const;

    /// Kills the group. What cannot be killed, because it has got other rights or hangs in
    /// a device, is waited for a second and then left to a later call of reapAbandoned().
    void stop();

    /// Without a status when children are not kept for us (SIGCHLD is ignored).
    Completion completion() const;

private:
    pid_t id_;
    Descriptor ending_;
    int status_ = 0;
    bool leadsGroup_;
    bool ended_ = false;
    bool known_ = false;
};

/// Children that nobody waits for are remembered until they have ended, as each would
/// stay in the system's table otherwise. Looks at those that there are, and makes room
/// for one more, so that abandon() needs no memory.
void reapAbandoned();
void abandon(pid_t id) noexcept;

} // namespace kaz::host
