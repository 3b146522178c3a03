// SPDX-License-Identifier: Apache-2.0
// Starting programs. A child inherits the three handles that are made for it and
// nothing else, whatever else is inheritable. One with a limit runs in a job, which ends
// with all that it started.
#include "tools/platform/deadline.h"
#include "tools/platform/host.h"
#include "tools/platform/windows/command_line.h"
#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/handle.h"
#include "tools/platform/windows/launch_text.h"
#include "tools/platform/windows/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <io.h>
#include <iterator>
#include <optional>

namespace kaz::host {

namespace {

/// While a child writes nothing it is looked at this often, in milliseconds:
/// pipes cannot be waited for together with a process.
constexpr DWORD pause = 5;
/// The status of what was stopped.
constexpr UINT stopped = 1;
/// The status of what was asked to end: what a shell elsewhere makes of SIGTERM.
constexpr UINT askedToEnd = 128 + 15;

/// A copy of a handle that a child inherits; not open for one that is not there.
Handle inheritable(HANDLE original) {
    HANDLE copy = INVALID_HANDLE_VALUE;
    const HANDLE self = GetCurrentProcess();
    if (original == INVALID_HANDLE_VALUE || original == nullptr ||
        DuplicateHandle(self, original, self, &copy, 0, TRUE, DUPLICATE_SAME_ACCESS) == 0)
        return Handle();
    return Handle(copy);
}

/// The handle behind a descriptor of the runtime library, which is what stdio
/// uses, wherever the process's own standard handles point to.
HANDLE behind(int descriptor) {
    return reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
}

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
/// a job is ended.
class Child {
public:
    Child(HANDLE process, Handle job) : process_(process), job_(std::move(job)) {}
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        // An exception of a sink may come this way while the child runs. One without a limit is
        // waited for, as it would be without the exception.
        if (job_.isOpen() && !await(0))
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
};

/// Programs write text with two characters at the end of a line. It arrives with
/// one, as the runtime library would read it.
class TextSink {
public:
    explicit TextSink(OutputSink& sink) : sink_(sink) {}

    void write(const char* data, std::size_t size) {
        std::string text;
        for (const char* c = data; c != data + size; ++c) {
            // The pair may arrive in two pieces, so a return waits for the next byte, whenever that
            // comes.
            if (heldBack_ && *c != '\n')
                text += '\r';
            heldBack_ = *c == '\r';
            if (!heldBack_)
                text += *c;
        }
        if (!text.empty())
            sink_.write(text.data(), text.size());
    }

    void finish() {
        if (heldBack_)
            sink_.write("\r", 1);
    }

private:
    OutputSink& sink_;
    bool heldBack_ = false; // a return whose successor is not known yet
};

/// This process's end of a pipe that a child writes to, and who gets what arrives.
class Outlet {
public:
    /// Makes the pipe for a sink. False with errno set on failure.
    bool open(OutputSink& sink, bool isText) {
        HANDLE ends[2] = {nullptr, nullptr};
        // Neither end can be inherited; the child gets a copy that can.
        if (CreatePipe(&ends[0], &ends[1], nullptr, 0) == 0)
            return failWithLastError() == 0;
        reading_ = Handle(ends[0]);
        writing_ = Handle(ends[1]);
        sink_ = &sink;
        if (isText)
            text_.emplace(sink);
        return true;
    }

    bool isOpen() const { return reading_.isOpen(); }
    HANDLE writing() const { return writing_.get(); }
    void closeWriting() { writing_.close(); }

    /// Hands on what is there now, and no more: somebody may go on writing. False when
    /// there is nothing.
    bool take() {
        DWORD there = 0;
        // A read would wait for a writer. The number of bytes is taken once, or a writer that never
        // rests would keep the others from their turn.
        if (!isOpen() || PeekNamedPipe(reading_.get(), nullptr, 0, nullptr, &there, nullptr) == 0 ||
            there == 0)
            return false;
        while (there > 0) {
            std::array<char, 16 * 1024> buffer;
            DWORD got = 0;
            if (ReadFile(reading_.get(), buffer.data(), std::min<DWORD>(buffer.size(), there), &got,
                         nullptr) == 0 ||
                got == 0)
                break;
            write(buffer.data(), got);
            there -= got;
        }
        return true;
    }

    void finish() {
        take();
        if (text_)
            text_->finish();
    }

private:
    void write(const char* data, std::size_t size) {
        if (text_)
            text_->write(data, size);
        else
            sink_->write(data, size);
    }

    Handle reading_;
    Handle writing_;
    OutputSink* sink_ = nullptr;
    std::optional<TextSink> text_;
};

/// Standard output, standard error, reports.
using Outlets = std::array<Outlet, 3>;

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

/// The null device, for a child.
Handle nothing() {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return Handle(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0,
                              nullptr));
}

/// A file that goes away with its last handle takes what a child shall read: it can
/// neither block nor break.
Handle fileOf(std::string_view text) {
    std::array<wchar_t, MAX_PATH + 1> directory{};
    std::array<wchar_t, MAX_PATH + 1> name{};
    // The name is reserved by an empty file that stays when the opening fails.
    if (GetTempPathW(directory.size(), directory.data()) == 0 ||
        GetTempFileNameW(directory.data(), L"in", 0, name.data()) == 0)
        return Handle();
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    Handle file(CreateFileW(name.data(), GENERIC_READ | GENERIC_WRITE | DELETE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                            CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE,
                            nullptr));
    while (file.isOpen() && !text.empty()) {
        const DWORD part = static_cast<DWORD>(std::min<std::size_t>(text.size(), 1U << 30));
        DWORD done = 0;
        if (WriteFile(file.get(), text.data(), part, &done, nullptr) == 0 || done == 0)
            return Handle();
        text.remove_prefix(done);
    }
    if (file.isOpen())
        // A handle that is inherited has its position: the child would begin at the end.
        SetFilePointer(file.get(), 0, nullptr, FILE_BEGIN);
    return file;
}

/// Handles of a child, all inheritable by it alone.
struct Standard {
    Handle input;
    Handle output;
    Handle error;
    Handle reports; ///< one more, where the child reports
};

/// False with errno set on failure.
bool prepare(const Launch& launch, Outlets& outlets, Standard& standard) {
    if (launch.isDetached) {
        standard = {nothing(), nothing(), nothing(), Handle()};
        return true;
    }
    if (launch.inputKind == Launch::text) {
        standard.input = fileOf(launch.input);
        if (!standard.input.isOpen())
            return failWithLastError() == 0;
    } else {
        standard.input = launch.inputKind == Launch::shared ? inheritable(behind(0)) : nothing();
    }
    if (launch.output != nullptr && !outlets[0].open(*launch.output, launch.isText))
        return false;
    const bool isSame = launch.errors == launch.output;
    if (launch.errors != nullptr && !isSame && !outlets[1].open(*launch.errors, launch.isText))
        return false;
    standard.output = inheritable(launch.output != nullptr ? outlets[0].writing() : behind(1));
    standard.error = inheritable(launch.errors == nullptr ? behind(2)
                                 : isSame                 ? outlets[0].writing()
                                                          : outlets[1].writing());
    if (launch.reports == nullptr)
        return true;
    if (!outlets[2].open(*launch.reports, launch.isText))
        return false;
    standard.reports = inheritable(outlets[2].writing());
    return true;
}

/// With the number of the pipe for reports, which is known only now.
/// A handle has the same number in the child that inherits it.
Launch numbered(const Launch& launch, const Standard& standard) {
    Launch result = launch;
    if (launch.reports != nullptr)
        result.variables.emplace_back(
            launch.reportVariable,
            std::to_string(reinterpret_cast<std::intptr_t>(standard.reports.get())));
    return result;
}

/// What is inherited: those handles alone.
class HandleList {
public:
    explicit HandleList(const Standard& standard) {
        for (const Handle* each :
             {&standard.input, &standard.output, &standard.error, &standard.reports})
            if (each->isOpen())
                handles_[count_++] = each->get();
        SIZE_T size = 0;
        // This call fails on purpose: it gives the size.
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        storage_.resize(size);
        auto* const list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(storage_.data());
        if (count_ > 0 && InitializeProcThreadAttributeList(list, 1, 0, &size) != 0 &&
            UpdateProcThreadAttribute(list, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                                      count_ * sizeof(HANDLE), nullptr, nullptr) != 0)
            list_ = list;
    }
    HandleList(const HandleList&) = delete;
    HandleList& operator=(const HandleList&) = delete;
    ~HandleList() {
        if (list_ != nullptr)
            DeleteProcThreadAttributeList(list_);
    }

    /// Null when nothing shall be inherited.
    /// The list points to the handles, so this object lives until the child is started.
    LPPROC_THREAD_ATTRIBUTE_LIST get() const { return list_; }

private:
    std::array<HANDLE, 4> handles_{};
    std::size_t count_ = 0;
    std::vector<char> storage_;
    LPPROC_THREAD_ATTRIBUTE_LIST list_ = nullptr;
};

std::string interpreter() {
    const char* named = environment("COMSPEC");
    return named != nullptr && *named != '\0' ? named : "cmd.exe";
}

/// Where and as what a child is started.
struct Target {
    std::wstring file;
    std::wstring line;
};

/// Without a file, with errno set, when there is no such program.
Target targetOf(const Launch& launch) {
    if (launch.words.empty())
        return failWith(ENOENT), Target();
    if (launch.isLine) {
        // With this option the interpreter takes off the outer quotes and nothing else.
        const std::string line = commandLine({interpreter()}) + " /s /c \"" + launch.words[0] + '"';
        return {programFile(interpreter()), widened(line)};
    }
    std::vector<std::string> words = launch.words;
    words[0] = hostPath(words[0].c_str());
    return {programFile(words[0]), widened(commandLine(words))};
}

/// A child with a limit is started suspended: it must be in its job before it can start anything
/// that would be outside.
DWORD flagsOf(const Launch& launch) {
    return EXTENDED_STARTUPINFO_PRESENT | CREATE_UNICODE_ENVIRONMENT |
           (launch.timeout > 0 ? CREATE_SUSPENDED : 0U) |
           (launch.isDetached ? DETACHED_PROCESS | CREATE_NEW_PROCESS_GROUP : 0U);
}

/// False with errno set when the program cannot be started.
/// The program's file is found here and not by the system, which would look into this program's
/// directory and the current one before the search path.
bool create(const Launch& launch, const Standard& standard, PROCESS_INFORMATION& process) {
    Target target = targetOf(launch);
    if (target.file.empty())
        return false;
    const HandleList handles(standard);
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = standard.input.get();
    start.StartupInfo.hStdOutput = standard.output.get();
    start.StartupInfo.hStdError = standard.error.get();
    start.lpAttributeList = handles.get();
    std::wstring variables = environmentBlock(numbered(launch, standard));
    const std::wstring directory = widened(hostPath(launch.directory.c_str()));
    // The line may be written into by the call, hence data().
    const BOOL started = CreateProcessW(target.file.c_str(), target.line.data(), nullptr, nullptr,
                                        handles.get() != nullptr ? TRUE : FALSE, flagsOf(launch),
                                        variables.empty() ? nullptr : variables.data(),
                                        directory.empty() ? nullptr : directory.c_str(),
                                        &start.StartupInfo, &process);
    // A directory to start in that is not there, which elsewhere is ENOENT, too.
    if (started == 0 && GetLastError() == ERROR_DIRECTORY)
        return failWith(ENOENT) == 0;
    return started != 0 || failWithLastError() == 0;
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
    {
        // The child has its handles with the start. Our copies go at the end of this block, so that
        // the pipes end when the child's own are closed.
        Standard standard;
        if (!prepare(launch, outlets, standard) || !create(launch, standard, process)) {
            completion.error = errno;
            completion.status = -1;
            return;
        }
    }
    Handle job = jobOf(launch, process);
    CloseHandle(process.hThread);
    if (launch.isDetached) {
        CloseHandle(process.hProcess);
        return;
    }
    const Child child(process.hProcess, std::move(job));
    // These go before the child is awaited on an exception, so that one that is still
    // writing ends as well.
    Outlets open = std::move(outlets);
    for (Outlet& outlet : open)
        outlet.closeWriting();
    const bool isStopped =
        attend(child, open, Deadline(launch.timeout > 0 ? launch.timeout : -1), launch.watch);
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
