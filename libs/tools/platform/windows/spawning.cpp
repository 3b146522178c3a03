// SPDX-License-Identifier: Apache-2.0
// A child inherits the handles that are made for it and nothing else, whatever else is inheritable.
#include "tools/platform/windows/spawning.h"

#include "tools/platform/host.h"
#include "tools/platform/windows/command_line.h"
#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/launch_text.h"
#include "tools/platform/windows/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <io.h>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::host {

namespace {

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

} // namespace

bool spawn(const Launch& launch, Outlets& outlets, PROCESS_INFORMATION& process) {
    // The child has its handles with the start. Our copies go here, so that the pipes end when the
    // child's own are closed.
    Standard standard;
    return prepare(launch, outlets, standard) && create(launch, standard, process);
}

} // namespace kaz::host
