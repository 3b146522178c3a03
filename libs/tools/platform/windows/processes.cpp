// SPDX-License-Identifier: Apache-2.0
// What a launched program writes is handed on until it ends, by itself or stopped. One with a limit
// runs in a job, which ends with all that it started.
#include "tools/platform/deadline.h"
#include "tools/platform/host.h"
#include "tools/platform/windows/handle.h"
#include "tools/platform/windows/outlet.h"
#include "tools/platform/windows/spawning.h"

#include <cerrno>
#include <csignal>
#include <utility>

namespace kaz::host {

namespace {

/// While a child writes nothing it is looked at this often, in milliseconds:
/// pipes cannot be waited for together with a process.
constexpr DWORD pause = 5;
/// The status of what was stopped.
constexpr UINT stopped = 1;
/// The status of what was asked to end: what a shell elsewhere makes of SIGTERM.
constexpr UINT askedToEnd = 128 + 15;

/// Exceptions that end a program, as the signals that they are elsewhere.
/// A program may also return such a number by itself; nothing tells the two apart.
int signalOf(DWORD code) {
    switch (code) {
    case STATUS_ACCESS_VIOLATION:
    case STATUS_STACK_OVERFLOW:
        return SIGSEGV;
    case STATUS_ILLEGAL_INSTRUCTION:
    case STATUS_PRIVILEGED_INSTRUCTION:
        return SIGILL;
    case STATUS_INTEGER_DIVIDE_BY_ZERO:
    case STATUS_FLOAT_DIVIDE_BY_ZERO:
        return SIGFPE;
    case STATUS_CONTROL_C_EXIT:
        return SIGINT;
    default:
        return 0;
    }
}

Completion completionOf(DWORD code) {
    Completion result;
    result.signal = signalOf(code);
    result.status = result.signal != 0 ? -1 : static_cast<int>(code);
    result.exception = code >= 0xC0000000U ? code : 0;
    return result;
}

/// A started child, and its job where it has one; awaited when this goes away, one with
/// a limit is ended.
class Child {
public:
    Child(HANDLE process, Handle job, bool hasLimit)
        : process_(process), job_(std::move(job)), hasLimit_(hasLimit) {}
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        // An exception of a sink may come this way while the child runs. One without a limit is
        // waited for, as it would be without the exception.
        if (hasLimit_ && !await(0))
            stop();
        await(INFINITE);
    }

    /// Whether it has ended within that many milliseconds.
    bool await(DWORD milliseconds) const {
        return WaitForSingleObject(process_.get(), milliseconds) == WAIT_OBJECT_0;
    }

    /// There is no request that a program without a window would get: it ends at once, and only the
    /// status tells that it was asked.
    void askToEnd() const { TerminateProcess(process_.get(), askedToEnd); }
    void stop() const {
        if (TerminateJobObject(job_.get(), stopped) == 0)
            TerminateProcess(process_.get(), stopped); // without a job it alone can be stopped
    }

    Completion completion() const {
        DWORD code = 0;
        GetExitCodeProcess(process_.get(), &code);
        return completionOf(code);
    }

private:
    Handle process_;
    Handle job_;
    bool hasLimit_;
};

/// Until the child ends: a process that it left in the background may hold the
/// output open for ever. True when it was stopped at the deadline.
bool attend(const Child& child, Outlets& outlets, const Deadline& deadline, StopWatch* watch) {
    // The end is looked for first: what the child wrote before it is in the pipes then, and
    // finish() takes it.
    while (!child.await(0)) {
        if (watch != nullptr && watch->isStopWanted())
            child.askToEnd();
        // The whole job ends, and what it wrote until then is still handed on.
        if (deadline.isOver()) {
            child.stop();
            child.await(INFINITE);
            return true;
        }
        const bool gotOutput = outlets[0].take();
        const bool gotErrors = outlets[1].take();
        const bool gotReports = outlets[2].take();
        if (!gotOutput && !gotErrors && !gotReports)
            child.await(pause);
    }
    return false;
}

/// The job of a child with a limit, which begins to run in it.
Handle jobOf(const Launch& launch, const PROCESS_INFORMATION& process) {
    if (launch.timeout <= 0)
        return Handle();
    Handle job(CreateJobObjectW(nullptr, nullptr));
    // One that is not in it would outlive its end.
    if (job.isOpen() && AssignProcessToJobObject(job.get(), process.hProcess) == 0)
        job = Handle();
    ResumeThread(process.hThread);
    return job;
}

} // namespace

void start(const Launch& launch, Completion& completion) {
    flushStreams();
    completion = Completion();
    Outlets outlets;
    PROCESS_INFORMATION process{};
    if (!spawn(launch, outlets, process)) {
        completion.error = errno;
        completion.status = -1;
        return;
    }
    Handle job = jobOf(launch, process);
    CloseHandle(process.hThread);
    if (launch.isDetached) {
        CloseHandle(process.hProcess);
        return;
    }
    const bool hasLimit = launch.timeout > 0;
    const Child child(process.hProcess, std::move(job), hasLimit);
    // These go before the child is awaited on an exception, so that one that is still
    // writing ends as well.
    Outlets open = std::move(outlets);
    for (Outlet& outlet : open)
        outlet.closeWriting();
    const bool isStopped =
        attend(child, open, Deadline(hasLimit ? launch.timeout : -1), launch.watch);
    for (Outlet& outlet : open)
        outlet.finish();
    completion = child.completion();
    if (isStopped) {
        completion.status = -1;
        completion.isStopped = true;
    }
}

const int interpreterFindsNothing = 9009;
const int interpreterMayNotRun = -2;

/// What ends a program here is an exception.
std::string signalName(int signal) {
    return "SIG" + std::to_string(signal);
}

std::string defaultSearchPath() {
    return {};
}

} // namespace kaz::host
