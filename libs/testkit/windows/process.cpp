// SPDX-License-Identifier: Apache-2.0
// Pipes have no poll here, so each of the three streams has a thread. The ends that the child
// inherited are closed on this side: a read ends only when nobody can write any more.
#include "testkit/process.h"

#include "testkit/windows/text.h"
#include "tools/platform/windows/command_line.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <vector>
#include <windows.h>

namespace moxkit {

namespace {

/// Closes a handle at the end.
struct Owned {
    HANDLE value = nullptr;
    Owned() = default;
    ~Owned() { close(); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    void close() {
        if (value != nullptr && value != INVALID_HANDLE_VALUE)
            CloseHandle(value);
        value = nullptr;
    }
};

/// A pipe of which the child inherits one end.
struct Pipe {
    Owned own;
    Owned childs;
    explicit Pipe(bool childReads) {
        HANDLE reading = nullptr;
        HANDLE writing = nullptr;
        if (CreatePipe(&reading, &writing, nullptr, 64 * 1024) == 0)
            std::abort();
        childs.value = childReads ? reading : writing;
        own.value = childReads ? writing : reading;
        SetHandleInformation(childs.value, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    }
};

bool sameName(const std::string& entry, const std::string& name) {
    return entry.size() > name.size() && entry[name.size()] == '=' &&
           ::_strnicmp(entry.c_str(), name.c_str(), name.size()) == 0;
}

/// The environment of this process with the changes made, as the system takes
/// it: ended by a NUL each and one more.
std::string environmentBlock(const std::map<std::string, std::string>& changes) {
    std::vector<std::string> entries;
    char* const all = GetEnvironmentStringsA();
    for (const char* entry = all; *entry != '\0'; entry += entries.back().size() + 1)
        entries.emplace_back(entry);
    FreeEnvironmentStringsA(all);
    std::erase_if(entries, [](const std::string& entry) { return sameName(entry, "KAZCOREROOT"); });
    for (const auto& [name, value] : changes) {
        std::erase_if(entries, [&](const std::string& entry) { return sameName(entry, name); });
        if (value != unset)
            entries.push_back(name + '=' + value);
    }
    std::string block;
    for (const std::string& entry : entries)
        block += entry + '\0';
    return block + '\0';
}

bool isPath(const std::string& name) {
    return name.find_first_of("/\\:") != std::string::npos;
}

std::string programPath(const std::string& name) {
    const std::string path = isPath(name) ? name : binDirectory() + '\\' + name;
    const bool complete =
        path.size() > 4 && ::_stricmp(path.c_str() + path.size() - 4, ".exe") == 0;
    return complete ? path : path + ".exe";
}

HANDLE outputFile(const std::string& name) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return CreateFileA(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0,
                       nullptr);
}

/// Null when the program cannot be started.
HANDLE start(const std::vector<std::string>& argv, const RunOptions& options, HANDLE in, HANDLE out,
             HANDLE err) {
    STARTUPINFOA info{};
    info.cb = sizeof info;
    info.dwFlags = STARTF_USESTDHANDLES;
    info.hStdInput = options.closeStdin ? nullptr : in;
    info.hStdOutput = options.closeStdout ? nullptr : out;
    info.hStdError = err;
    std::string line = kaz::host::commandLine(argv);
    std::string block = environmentBlock(options.env);
    PROCESS_INFORMATION process{};
    if (CreateProcessA(programPath(argv[0]).c_str(), line.data(), nullptr, nullptr, TRUE, 0,
                       block.data(), options.cwd.empty() ? nullptr : options.cwd.c_str(), &info,
                       &process) == 0)
        return nullptr;
    CloseHandle(process.hThread);
    return process.hProcess;
}

void readAll(HANDLE pipe, std::string& text) {
    char buffer[4096];
    for (DWORD n = 0; ReadFile(pipe, buffer, sizeof buffer, &n, nullptr) != 0 && n > 0;)
        text.append(buffer, n);
}

/// A program that has stopped reading ends the writing, and is no failure of the test.
void writeAll(Owned& pipe, const std::string& text) {
    DWORD written = 0;
    for (std::size_t at = 0; at < text.size(); at += written)
        if (WriteFile(pipe.value, text.data() + at, static_cast<DWORD>(text.size() - at), &written,
                      nullptr) == 0)
            break;
    pipe.close();
}

/// Crashes show as the signal that they are elsewhere, for tests that know one system only.
void setStatus(DWORD code, Result& result) {
    if (code == STATUS_ACCESS_VIOLATION || code == STATUS_STACK_OVERFLOW)
        result.signal = SIGSEGV;
    else
        result.status = static_cast<int>(code);
}

} // namespace

Result run(const std::vector<std::string>& argv, const RunOptions& options) {
    // Neither exists here; a test that needs one says so before it comes here.
    if (options.pty || options.signal != 0)
        std::abort();
    Result result;
    Pipe in(true);
    Pipe out(false);
    Pipe err(false);
    Owned file;
    if (!options.stdoutFile.empty())
        file.value = outputFile(options.stdoutFile);
    Owned process;
    process.value = start(argv, options, in.childs.value,
                          file.value != nullptr ? file.value : out.childs.value, err.childs.value);
    in.childs.close();
    out.childs.close();
    err.childs.close();
    if (process.value == nullptr) {
        result.status = 127; // as a command interpreter has it
        return result;
    }
    std::thread feeding([&] { writeAll(in.own, options.input); });
    std::thread hearing([&] { readAll(out.own.value, result.out); });
    std::thread noticing([&] { readAll(err.own.value, result.err); });
    if (WaitForSingleObject(process.value, static_cast<DWORD>(options.timeoutSeconds) * 1000) !=
        WAIT_OBJECT_0)
        TerminateProcess(process.value, 1);
    DWORD code = 0;
    GetExitCodeProcess(process.value, &code);
    feeding.join();
    hearing.join();
    noticing.join();
    setStatus(code, result);
    result.out = withoutReturns(result.out);
    result.err = withoutReturns(result.err);
    return result;
}

std::string binDirectory() {
    char name[MAX_PATH + 1] = "";
    GetModuleFileNameA(nullptr, name, sizeof name);
    const std::string self(name);
    return self.substr(0, self.rfind('\\'));
}

} // namespace moxkit
