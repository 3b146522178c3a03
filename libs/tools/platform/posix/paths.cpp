// SPDX-License-Identifier: Apache-2.0
// Native text and the host's spelling differ in the separator alone; every other byte passes
// unchanged. Absolute paths are made by text only: ".." takes the last component away whether or
// not it is a link, and nothing is asked of the file system but the current directory.
#include "tools/platform/host.h"
#include "tools/platform/posix/descriptor.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <link.h>
#include <string>
#include <string_view>
#include <strings.h>
#include <unistd.h>

namespace kaz::host {

namespace {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

bool hasDrive(const char* path) {
    const char letter = static_cast<char>(path[0] | 0x20);
    return letter >= 'a' && letter <= 'z' && path[1] == ':';
}

bool hasShare(const char* path) {
    return isSeparator(path[0]) && isSeparator(path[1]);
}

std::string withSeparators(const char* path, char from, char to) {
    std::string result = path;
    std::replace(result.begin(), result.end(), from, to);
    return result;
}

/// What a component ends at. One look instead of three comparisons a character
/// takes a third off the time of an absolute path.
constexpr std::array<bool, 256> endsComponent = [] {
    std::array<bool, 256> result{};
    for (const unsigned char c : {'\0', '/', '\\'})
        result[c] = true;
    return result;
}();

/// Copies one component of a path, without the separators in front of it; none at
/// the end. Both places move on.
void copyComponent(const char*& path, char*& out) {
    const char* from = path;
    char* to = out;
    while (isSeparator(*from))
        ++from;
    while (!endsComponent[static_cast<unsigned char>(*from)])
        *to++ = *from++;
    path = from;
    out = to;
}

/// Writes the root of a path, which nothing takes away: a share's first two
/// components as far as there are any, a drive's letter, or a separator alone. It
/// ends in a separator unless nothing follows.
char* writeRoot(const char*& path, char* out) {
    if (hasShare(path)) {
        *out++ = '\\';
        *out++ = '\\';
        copyComponent(path, out);
        if (*path != '\0')
            *out++ = '\\';
        copyComponent(path, out);
    } else if (hasDrive(path)) {
        out = std::copy_n(path, 2, out);
        path += 2;
    }
    if (*path != '\0')
        *out++ = '\\';
    return out;
}

char* withSeparator(char* out) {
    if (out[-1] != '\\')
        *out++ = '\\';
    return out;
}

/// Without the last component behind @p root.
char* oneUp(const char* root, char* out) {
    while (out > root && out[-1] != '\\')
        --out;
    return out > root ? out - 1 : out;
}

/// Writes the components of @p path behind @p root and what is there already,
/// with "." and ".." folded and runs of separators made one.
char* writeFolded(const char* path, const char* root, char* out) {
    while (*path != '\0') {
        char* const before = out;
        char* const name = withSeparator(out);
        out = name;
        copyComponent(path, out);
        const std::string_view component(name, static_cast<std::size_t>(out - name));
        if (component == "..")
            out = oneUp(root, before);
        else if (component.empty() || component == ".")
            out = before;
    }
    return out;
}

std::string resolvedLink(const char* link) {
    std::array<char, PATH_MAX> buffer;
    const ssize_t length = ::readlink(link, buffer.data(), buffer.size());
    return length > 0 ? std::string(buffer.data(), static_cast<std::size_t>(length))
                      : std::string();
}

std::string resolvedPath(const std::string& path) {
    std::array<char, PATH_MAX> buffer;
    return ::realpath(path.c_str(), buffer.data()) != nullptr ? buffer.data() : "";
}

/// Whether a component of @p directory, which ends in a separator, is called "bin".
bool liesInBin(const std::string& directory) {
    for (std::size_t start = 0, end; (end = directory.find('/', start)) != directory.npos;
         start = end + 1)
        if (end - start == 3 && ::strncasecmp(directory.c_str() + start, "bin", 3) == 0)
            return true;
    return false;
}

/// What is loaded around an address.
struct Loaded {
    std::uintptr_t address;
    const char* name; ///< null until it is found; "" for the program
};

int lookInto(dl_phdr_info* info, std::size_t, void* data) {
    auto& loaded = *static_cast<Loaded*>(data);
    const auto isAround = [&](const ElfW(Phdr) & part) {
        return part.p_type == PT_LOAD &&
               // Unsigned: an address in front of the part is far behind it.
               loaded.address - (info->dlpi_addr + part.p_vaddr) < part.p_memsz;
    };
    if (!std::any_of(info->dlpi_phdr, info->dlpi_phdr + info->dlpi_phnum, isAround))
        return 0;
    loaded.name = info->dlpi_name;
    return 1;
}

/// The file that holds this function, as it was loaded; of a program its first argument.
/// dladdr gives the same and looks for the name of the function besides, through all that the
/// library exports: 5 % of the start of a tool.
const char* loadedName() {
    Loaded loaded{reinterpret_cast<std::uintptr_t>(&loadedName), nullptr};
    ::dl_iterate_phdr(lookInto, &loaded);
    return loaded.name == nullptr || *loaded.name != '\0' ? loaded.name : ::program_invocation_name;
}

} // namespace

bool canName(const char* path) {
    return !hasDrive(path) && !hasShare(path);
}

std::string hostPath(const char* native) {
    return canName(native) ? withSeparators(native, '\\', '/') : std::string();
}

std::string nativePath(const char* hostSpelling) {
    return withSeparators(hostSpelling, '/', '\\');
}

std::size_t pathLimit() {
    return PATH_MAX;
}

char searchPathSeparator() {
    return ':';
}

const std::string& absolutePath(const char* path) {
    // Kept from call to call: it saves the only allocation. Never destroyed, as
    // static objects of a tool may ask to the very end.
    static std::string& result = *new std::string;
    result.clear();
    std::string here;
    if (!isSeparator(*path) && !(hasDrive(path) && isSeparator(path[2]))) {
        errno = ENOENT;
        if (*path != '\0' && !hasDrive(path)) // no drive has a current directory here
            here = currentDirectory();
        if (here.empty())
            return result;
    }
    const std::size_t length = std::strlen(path);
    const bool trailing = isSeparator(path[length - 1]);
    constexpr std::size_t added = 3; // separators: of a share, behind it, at the end
    result.resize(here.size() + length + added);
    char* end = writeRoot(path, result.data());
    const char* const root = end;
    end = writeFolded(here.c_str(), root, end);
    end = writeFolded(path, root, end);
    if (trailing)
        end = withSeparator(end);
    result.resize(static_cast<std::size_t>(end - result.data()));
    if (result.size() >= pathLimit()) {
        result.clear();
        errno = ENAMETOOLONG;
    }
    return result;
}

std::string currentDirectory() {
    std::array<char, PATH_MAX> buffer;
    const char* here = retry([&] { return ::getcwd(buffer.data(), buffer.size()); });
    return here != nullptr ? nativePath(here) : std::string();
}

std::string moduleFileName() {
    const char* const loaded = loadedName();
    if (loaded == nullptr)
        return {};
    // Linked into the program itself the name is argv[0], which the search path
    // may have completed.
    const std::string file =
        std::strchr(loaded, '/') != nullptr ? loaded : resolvedLink("/proc/self/exe");
    const std::size_t slash = file.rfind('/');
    if (slash == std::string::npos)
        return {};
    std::string directory = resolvedPath(file.substr(0, slash + 1));
    if (directory.empty())
        return {};
    if (directory.back() != '/')
        directory += '/';
    const std::string name = directory + file.substr(slash + 1);
    const std::string resolved = liesInBin(directory) ? name : resolvedPath(name);
    return nativePath((resolved.empty() ? name : resolved).c_str());
}

} // namespace kaz::host
