#include "tools/platform/host.h"
#include "tools/platform/windows/command_line.h"
#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/handle.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <io.h>

namespace kaz::host {

namespace {

/// While a child writes nothing it is looked at this often, in milliseconds:
/// pipes cannot be waited for together with a process.
constexpr DWORD pause = 5;

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

Completion notStarted(int number) {
    Completion result;
    result.error = number;
    result.status = -1;
    return result;
}

/// Exceptions that end a program, as the signals that they are elsewhere.
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
    return result;
}

/// A started child; awaited when this goes away.
class Child {
public:
    explicit Child(HANDLE process) : process_(process) {}
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() { await(INFINITE); }

    /// Whether it has ended within that many milliseconds.
    bool await(DWORD milliseconds) const {
        return WaitForSingleObject(process_.get(), milliseconds) == WAIT_OBJECT_0;
    }

    Completion completion() const {
        DWORD code = 0;
        GetExitCodeProcess(process_.get(), &code);
        return completionOf(code);
    }

private:
    Handle process_;
};

/// Programs write text with two characters at the end of a line. It arrives with
/// one, as the runtime library would read it.
class TextSink {
public:
    explicit TextSink(OutputSink& sink) : sink_(sink) {}

    void write(const char* data, std::size_t size) {
        std::string text;
        for (const char* c = data; c != data + size; ++c) {
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

/// Hands on what is there to be read; false when there is nothing for now.
bool drain(HANDLE output, TextSink& sink) {
    std::array<char, 16 * 1024> buffer;
    DWORD there = 0;
    DWORD got = 0;
    if (PeekNamedPipe(output, nullptr, 0, nullptr, &there, nullptr) == 0 || there == 0 ||
        ReadFile(output, buffer.data(), buffer.size(), &got, nullptr) == 0 || got == 0)
        return false;
    sink.write(buffer.data(), got);
    return true;
}

/// Until the child ends: a process that it left in the background may hold the
/// output open for ever.
void forward(HANDLE output, const Child& child, OutputSink& receiver) {
    TextSink sink(receiver);
    while (!child.await(0))
        if (!drain(output, sink))
            child.await(pause);
    while (drain(output, sink)) {
    }
    sink.finish();
}

/// Standard handles of a child, all inheritable by it alone.
struct Standard {
    Handle input;
    Handle output;
    Handle error;
};

/// Null with errno set when the program cannot be started.
HANDLE create(std::string& line, const Standard& standard) {
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = standard.input.get();
    start.hStdOutput = standard.output.get();
    start.hStdError = standard.error.get();
    PROCESS_INFORMATION process{};
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                       &process) == 0) {
        failWithLastError();
        return nullptr;
    }
    CloseHandle(process.hThread);
    return process.hProcess;
}

Completion start(std::string line, OutputSink* sink) {
    std::fflush(nullptr);
    HANDLE ends[2] = {nullptr, nullptr};
    if (sink != nullptr && CreatePipe(&ends[0], &ends[1], nullptr, 0) == 0)
        return notStarted(errnoOf(GetLastError()));
    Handle reading(ends[0]);
    Handle writing(ends[1]);
    HANDLE process = nullptr;
    {
        const Standard standard{inheritable(behind(0)),
                                inheritable(sink != nullptr ? writing.get() : behind(1)),
                                inheritable(sink != nullptr ? writing.get() : behind(2))};
        process = create(line, standard);
    }
    if (process == nullptr)
        return notStarted(errno);
    const Child child(process);
    writing.close();
    // The reading end goes before the child is awaited on an exception, so that a
    // child that is still writing ends as well.
    const Handle output(std::move(reading));
    if (sink != nullptr)
        forward(output.get(), child, *sink);
    child.await(INFINITE);
    return child.completion();
}

std::string interpreter() {
    const char* named = environment("COMSPEC");
    return named != nullptr && *named != '\0' ? named : "cmd.exe";
}

} // namespace

Completion run(const std::vector<std::string>& arguments, OutputSink* sink) {
    if (arguments.empty() || arguments[0].empty())
        return notStarted(ENOENT);
    std::vector<std::string> texts = arguments;
    texts[0] = hostPath(texts[0].c_str());
    return start(commandLine(texts), sink);
}

Completion runShell(const char* command, OutputSink* sink) {
    // With this option the interpreter takes off the outer quotes and nothing else.
    return start(commandLine({interpreter()}) + " /s /c \"" + command + '"', sink);
}

} // namespace kaz::host
