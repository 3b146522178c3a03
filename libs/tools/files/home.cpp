// SPDX-License-Identifier: Apache-2.0
// The answers are found anew at each question, except for the directory of the installation,
// which cannot change while the process runs. "~" has one buffer for its results: the next
// expansion takes the place of the last one, unless the path had nothing to expand and is its own
// result.
#include "tools/files/home.h"

#include "tools/files/path_text.h"
#include "tools/platform/host.h"
#include "tools/util/text.h"

#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>

namespace {

bool isSeparator(char c) {
    return c == '\\' || c == '/';
}

bool isHomePath(const char* path) {
    return path[0] == '~' && (path[1] == '\0' || isSeparator(path[1]));
}

/// The directory that holds the lowest "bin" above @p path, else its root part.
std::string directoryAboveBin(std::string path) {
    std::size_t cut = 0;
    while (kazDirPartLength(path.c_str()) > kazRootPartLength(path.c_str()) &&
           (cut = path.find_last_of("\\/")) != path.npos) {
        // Without case: on some hosts the directory may be spelt "Bin".
        const bool found = kaz_fast_stricmp(path.c_str() + cut + 1, "bin") == 0;
        // The path gets shorter in each turn, so the loop ends at the root part.
        path.resize(cut);
        if (found)
            return path;
    }
    return kazPathRootPart(path.c_str()).getValue();
}

/// "HOME" without its last separator (nothing is left of a root); none when it
/// names no directory.
std::optional<std::string> ownChoice() {
    const char* home = kaz::host::environment("HOME");
    // One that is wrong is passed over, and the host's own places are asked.
    if (home == nullptr || !kaz::host::isDirectory(home))
        return std::nullopt;
    std::string result = kaz::host::nativePath(home);
    if (!result.empty() && isSeparator(result.back()))
        result.pop_back();
    return result;
}

/// Steps down from @p directory and creates each step; failures show later,
/// when something is written there.
std::string createdBelow(std::string directory, std::initializer_list<const char*> steps) {
    for (const char* step : steps) {
        directory.append(1, '\\').append(step);
        kaz::host::makeDirectory(directory.c_str(), 0777);
    }
    return directory;
}

/// Where "~" followed by @p rest leads; empty when the user has no home. On a host
/// that keeps the settings of programs apart, the suite has its own place there.
std::string expandedHome(const std::string& rest) {
    if (const std::optional<std::string> own = ownChoice())
        return *own + '\\' + rest;
    std::string home = kaz::host::roamingDataDirectory();
    if (!home.empty())
        return createdBelow(home, {"Tarvo", "Mox"}) + '\\' + rest;
    home = kaz::host::profileDirectory();
    // This form alone carries quotes; its users count on them.
    if (!home.empty())
        return '"' + createdBelow(home, {"Application Data", "Tarvo", "Mox"}) + '\\' + rest + '"';
    home = kaz::host::homeDirectory();
    return kaz::host::isDirectory(home.c_str()) ? home + '\\' + rest : std::string();
}

} // namespace

const char* TI_myRootDir() {
    static constinit const char* root = nullptr;
    if (root == nullptr) {
        const std::string module = kaz::host::moduleFileName();
        // A failure is not remembered; the next question asks again.
        if (!module.empty())
            root = mkcpy(directoryAboveBin(module).c_str());
    }
    return root;
}

KazString kazMoxRootDir() {
    return KazString(TI_myRootDir());
}

KazString kazMoxBinDir() {
    return kazDirForDisplay(kazPathDirPart(kaz::host::moduleFileName().c_str()));
}

const char* _TI_hm(const char* path) {
    // Never destroyed: static objects of a tool may expand paths to the very end.
    static std::string& buffer = *new std::string;
    if (path == nullptr)
        return "";
    if (!isHomePath(path))
        return path;
    // Whole before the buffer changes, as the path may stand in the buffer.
    // The separator behind "~" is skipped, because the expansion brings its own.
    std::string expanded = expandedHome(path + (path[1] == '\0' ? 1 : 2));
    if (expanded.empty())
        return path;
    buffer.swap(expanded);
    return buffer.c_str();
}

const char* kazGetUserHomeDir() {
    return mkcpy(_TI_hm("~"));
}

void TI_userdir(char* buffer, int size) {
    if (buffer == nullptr || buffer[0] != '~')
        return;
    const char* expanded = _TI_hm(buffer);
    const std::size_t length = std::strlen(expanded);
    // What does not fit leaves the buffer as it was: half of a path is another path.
    if (size > 0 && length < static_cast<std::size_t>(size))
        std::memmove(buffer, expanded, length + 1);
}
