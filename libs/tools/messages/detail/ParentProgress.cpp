// SPDX-License-Identifier: Apache-2.0
// A tool that another one has started reports to it through a pipe that it inherits. One progress
// at a time is told, the first to begin; the others are shown by this tool's own director.
// Reports are lines of a channel and a percentage in tenths, and none is written twice. When the
// parent has gone, the pipe is closed and nothing more is said: a child does not fail for want of
// a listener.
#include "tools/messages/detail/ParentProgress.h"

#include "tools/messages/KazProgressHandle.h"
#include "tools/messages/detail/ProgressTrack.h"
#include "tools/platform/host.h"
#include "tools/platform/host_lines.h"

#include <cstddef>
#include <new>
#include <string>

namespace kaz::detail {

constinit bool ParentProgress::isOffered_ = false;
constinit bool ParentProgress::isOpen_ = false;

namespace {

/// Its speed is for the parent to measure.
constexpr ProgressTrack::Clock::time_point never;

struct Link {
    host::LineWriter pipe;
    const char* (*option)() = nullptr;
    std::string channel;
    ProgressTrack track{never};
    int told = 0; ///< tenths of a percent
};

/// Never destroyed, as progresses may end in static objects. It needs no memory: it is made
/// before anything is there that would tell the lack of it.
Link& link() {
    alignas(Link) static std::byte room[sizeof(Link)];
    static Link& kept = *new (room) Link;
    return kept;
}

} // namespace

void ParentProgress::start(const char* (*option)()) {
    const char* const name = host::environment(variable);
    if (name == nullptr)
        return;
    link().option = option;
    link().pipe = host::LineWriter::handedOn(name);
    isOffered_ = link().pipe.isOpen();
}

bool ParentProgress::begin() {
    if (isOpen_)
        return false;
    const char* const channel = link().option();
    int id, low, high;
    if (!KazProgressHandle::parseChannel(channel, id, low, high))
        return false;
    link().channel = channel;
    reset();
    return isOpen_ = true;
}

void ParentProgress::increment(double amount, bool absolute) {
    link().track.increment(amount, absolute, never);
    tell();
}

void ParentProgress::startStep(double share) {
    link().track.push(share);
}

void ParentProgress::endStep() {
    link().track.pop(never);
    tell();
}

void ParentProgress::reset() {
    link().track.reset(never);
    link().told = 0;
}

/// The last tenths need not have been told: the parent completes the step when the child ends.
void ParentProgress::end() {
    isOpen_ = false;
}

/// Sums of fractions count as what they were meant to be.
void ParentProgress::tell() {
    const int tenths = static_cast<int>(link().track.percent() * 10 + 1e-6);
    if (tenths == link().told || !link().pipe.isOpen())
        return;
    link().told = tenths;
    const std::string line = link().channel + ' ' + std::to_string(tenths / 10) + '.' +
                             std::to_string(tenths % 10) + '\n';
    // A parent that does not read lets the pipe fill up, and this tool waits then.
    if (link().pipe.write(line) != 0)
        link().pipe = host::LineWriter();
}

} // namespace kaz::detail
