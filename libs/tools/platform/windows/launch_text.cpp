// SPDX-License-Identifier: Apache-2.0
// What a program is started with: its file, its environment, and a line that the command
// interpreter reads. Names of files and variables are the same in either case. Batch files are
// refused as programs, because the interpreter that runs them reads their arguments by other
// rules than programs do, and no quoting serves both.
#include "tools/platform/windows/launch_text.h"

#include "tools/platform/host.h"
#include "tools/platform/windows/errors.h"
#include "tools/platform/windows/text.h"

#include <algorithm>
#include <cerrno>
#include <windows.h>

namespace kaz::host {

namespace {

bool sameName(std::wstring_view a, std::wstring_view b) {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

bool endsIn(std::wstring_view file, std::wstring_view extension) {
    return file.size() >= extension.size() &&
           sameName(file.substr(file.size() - extension.size()), extension);
}

/// Along @p path, or as it stands where that is null; empty when there is no such file.
/// The length that is given back for a short buffer counts the end, that for a long enough one does
/// not; so one below the size means that the text is there. It is 0 for a failure.
std::wstring searched(const wchar_t* path, const std::wstring& name) {
    std::wstring file(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = SearchPathW(path, name.c_str(), L".exe",
                                         static_cast<DWORD>(file.size()), file.data(), nullptr);
        const bool fits = length < file.size();
        file.resize(length);
        if (fits)
            return file;
    }
}

std::wstring searchPath() {
    const char* path = environment("PATH");
    return path != nullptr ? widened(path) : std::wstring();
}

bool isChanged(const Launch& launch, std::wstring_view name) {
    const auto isName = [&](const std::string& text) { return sameName(widened(text), name); };
    return std::any_of(launch.removed.begin(), launch.removed.end(), isName) ||
           std::any_of(launch.variables.begin(), launch.variables.end(),
                       [&](const auto& variable) { return isName(variable.first); });
}

} // namespace

std::wstring programFile(const std::string& name) {
    const std::wstring wide = widened(name);
    const bool hasDirectory = name.find_first_of("\\/:") != std::string::npos;
    const std::wstring path = hasDirectory ? std::wstring() : searchPath();
    std::wstring file;
    // The system puts ".exe" only behind a name without an extension, so "a.b" is looked for with
    // and without it.
    for (const std::wstring& candidate : {wide, wide + L".exe"}) {
        if (hasDirectory) {
            const DWORD attributes = GetFileAttributesW(candidate.c_str());
            if (attributes != INVALID_FILE_ATTRIBUTES &&
                (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
                file = candidate;
        } else if (!path.empty() && !name.empty()) {
            file = searched(path.c_str(), candidate);
        }
        if (!file.empty())
            break;
    }
    if (file.empty()) {
        failWith(ENOENT);
    } else if (endsIn(file, L".bat") || endsIn(file, L".cmd")) {
        failWith(ENOEXEC);
        file.clear();
    }
    return file;
}

namespace {

/// What stands for a percent sign in a line. The interpreter puts variables in once and
/// reads no sign that came so again; a caret before one holds in some interpreters only.
constexpr const char* percentVariable = "MOX_PERCENT";
constexpr const char* percentSign = "%MOX_PERCENT%";

bool needsPercent(const Launch& launch) {
    return launch.isLine && launch.words.front().find(percentSign) != std::string::npos;
}

} // namespace

std::wstring environmentBlock(const Launch& launch) {
    if (launch.variables.empty() && launch.removed.empty() && !needsPercent(launch))
        return {};
    std::wstring block;
    if (needsPercent(launch))
        block.append(widened(percentVariable + std::string("=%"))).push_back(L'\0');
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* entry = own; entry != nullptr && *entry != L'\0';) {
        const std::wstring_view text(entry);
        // The system's own entries begin with "=".
        if (!isChanged(launch, text.substr(0, text.find(L'=', 1))))
            block.append(text).push_back(L'\0');
        entry += text.size() + 1;
    }
    if (own != nullptr)
        FreeEnvironmentStringsW(own);
    for (const auto& [name, value] : launch.variables)
        block.append(widened(name + '=' + value)).push_back(L'\0');
    // A block without variables ends in two NULs, too.
    if (block.empty())
        block.push_back(L'\0');
    return block + L'\0';
}

std::string interpreterWord(std::string_view word) {
    // The interpreter's line ends there, and no quoting gets beyond it.
    if (word.find_first_of("\r\n") != std::string_view::npos)
        return {};
    // Quoted for the program that reads it; then no character, the quotes included,
    // means anything to the interpreter.
    std::string quoted;
    std::size_t backslashes = 0;
    quoted += '"';
    for (const char c : word) {
        if (c == '"')
            quoted.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    quoted.append(backslashes, '\\') += '"';
    std::string result;
    for (const char c : quoted) {
        if (c == '%') {
            result += percentSign;
            continue;
        }
        if (std::string_view("()!^\"<>&|").find(c) != std::string_view::npos)
            result += '^';
        result += c;
    }
    return result;
}

} // namespace kaz::host
